// GeoPackages of any bytes, with a journal of any bytes beside them, through the adapter of files on disk: read or
// refused, and every file of the folder stays as it is, whatever the journal names.

#include "adapters/gdal/gdal_support.h"
#include "adapters/gdal/sqlite_fence.h"
#include "adapters/ogr/ogr_feature_class.h"
#include "fuzz/patched_files.h"
#include "fuzz/scratch_files.h"

#include <gdal_priv.h>
#include <ogrsf_frmts.h>

namespace {

using namespace wxl;
using fuzz::require;
namespace fs = std::filesystem;

constexpr int kFixes = 4;

void run(sqlite3* database, const char* sql) {
    require(sqlite3_exec(database, sql, nullptr, nullptr, nullptr) == SQLITE_OK, "a good database to begin with");
}

void make_layer(const fs::path& file) {
    files::RegisterGdal();
    const files::GdalDatasetPtr dataset(
        GetGDALDriverManager()->GetDriverByName("GPKG")->Create(file.c_str(), 0, 0, 0, GDT_Unknown, nullptr));
    OGRLayer* layer = dataset->CreateLayer("l", nullptr, wkbPoint);
    OGRFieldDefn animal("animal", OFTString);
    layer->CreateField(&animal);
    for (int i = 0; i < kFixes; ++i) {
        const OGRFeatureUniquePtr feature(OGRFeature::CreateFeature(layer->GetLayerDefn()));
        feature->SetField(0, "a");
        feature->SetGeometryDirectly(new OGRPoint(500000.0 + i, 6000000.0 + 2 * i));
        require(layer->CreateFeature(feature.get()) == OGRERR_NONE, "rows to begin with");
    }
}

/// A GeoPackage in small pages, and the journal of a change of it that was cut short and names the file "victim".
fuzz::Files good_files(const fs::path& folder) {
    const fs::path file = folder / "good.gpkg";
    make_layer(file);
    sqlite3* database = nullptr;
    sqlite3_open(file.c_str(), &database);
    run(database, "PRAGMA page_size=512; VACUUM; PRAGMA cache_size=1");
    run(database, "BEGIN IMMEDIATE; CREATE TABLE half(a); INSERT INTO half VALUES(zeroblob(20000))");
    fuzz::Files good;
    good["gpkg"] = fuzz::read_bytes(file);
    good["gpkg-journal"] = fuzz::read_bytes(file.string() + "-journal");
    run(database, "ROLLBACK");
    sqlite3_close(database);
    for (const char* ending : {"", "-journal"}) fs::remove(file.string() + ending);

    const std::string named = folder / "victim";
    const auto big_endian = [](std::uint32_t value) {
        std::string bytes(4, '\0');
        for (unsigned i = 0; i < 4; ++i) bytes[i] = static_cast<char>(value >> (24U - 8U * i));
        return bytes;
    };
    std::uint32_t sum = 0;
    for (const char c : named) sum += static_cast<unsigned char>(c);
    good["gpkg-journal"] += big_endian(0x40000000 / 512 + 1) + named +
                            big_endian(static_cast<std::uint32_t>(named.size())) + big_endian(sum) +
                            "\xd9\xd5\x05\xf9\x20\xa1\x63\xd7";
    return good;
}

fuzz::Files content_of(const fs::path& folder) {
    fuzz::Files found;
    for (const auto& entry : fs::directory_iterator(folder))
        found[entry.path().filename().string()] = fuzz::read_bytes(entry.path());
    return found;
}

void read_all(const std::string& input) {
    const auto features = files::OgrFeatureClass::Open(input);
    features->FeatureCount();
    features->Bounds();
    const auto fields = features->Table().Fields();
    const auto cursor = features->Find({});
    constexpr int kMostRows = 5000;
    for (int rows = 0; rows < kMostRows; ++rows) {
        const auto row = cursor->NextFeature();
        if (!row) return;
        for (std::size_t i = 0; i < fields.size(); ++i) row->Value(static_cast<int>(i));
        fuzz::fault_of([&] { row->Shape(); });
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const fuzz::FuzzFolder folder;
    static const fuzz::Files good = good_files(folder.Path());
    for (const auto& entry : fs::directory_iterator(folder.Path())) fs::remove_all(entry);
    fuzz::FuzzInput input(data, size);
    for (const auto& [extension, bytes] : fuzz::files_of(input, good))
        if (!bytes.empty()) fuzz::write_bytes(folder.Path() / ("l." + extension), bytes);
    fuzz::write_bytes(folder.Path() / "victim", "precious");

    const fuzz::Files before = content_of(folder.Path());
    {
        const files::SqliteFence fence;
        fuzz::fault_of([&] { read_all(folder.Path() / "l.gpkg"); });
    }
    require(content_of(folder.Path()) == before, "reading leaves every file as it is");
    return 0;
}
