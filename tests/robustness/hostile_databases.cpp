#include "tests/robustness/hostile_databases.h"

#include "adapters/gdal/gdal_support.h"

#include <array>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <memory>
#include <ogrsf_frmts.h>
#include <sqlite3.h>
#include <stdexcept>

namespace wxl::tests {

namespace fs = std::filesystem;

namespace {

struct Closer {
    void operator()(sqlite3* database) const { sqlite3_close(database); }
};

class Database {
public:
    explicit Database(const fs::path& file) {
        sqlite3* opened = nullptr;
        sqlite3_open(file.c_str(), &opened);
        m_database.reset(opened);
    }
    void Run(const std::string& sql) const {
        char* message = nullptr;
        if (sqlite3_exec(m_database.get(), sql.c_str(), nullptr, nullptr, &message) == SQLITE_OK) return;
        const std::string why = message == nullptr ? "" : message;
        sqlite3_free(message);
        throw std::runtime_error(sql + ": " + why);
    }

private:
    std::unique_ptr<sqlite3, Closer> m_database;
};

std::string in_quotes(const std::string& text) {
    std::string quoted = "'";
    for (const char c : text) quoted += c == '\'' ? std::string("''") : std::string(1, c);
    return quoted + "'";
}

void make_plain(const fs::path& file) {
    GDALAllRegister();
    const files::GdalDatasetPtr dataset(
        GetGDALDriverManager()->GetDriverByName("GPKG")->Create(file.c_str(), 0, 0, 0, GDT_Unknown, nullptr));
    OGRSpatialReference reference;
    reference.importFromEPSG(32633);
    // An index would need functions that SQLite alone does not have.
    std::array<const char*, 2> options = {"SPATIAL_INDEX=NO", nullptr};
    OGRLayer* layer = dataset->CreateLayer("points", &reference, wkbPoint, const_cast<char**>(options.data()));
    OGRFieldDefn animal("animal", OFTString);
    OGRFieldDefn time("Time2", OFTInteger64);
    layer->CreateField(&animal);
    layer->CreateField(&time);
    for (int i = 0; i < 3; ++i) {
        const OGRFeatureUniquePtr feature(OGRFeature::CreateFeature(layer->GetLayerDefn()));
        feature->SetField(0, "a");
        feature->SetField(1, 60 * i);
        feature->SetGeometryDirectly(new OGRPoint(500000.0 + 300.0 * i, 6000000.0 + 100.0 * i * i));
        if (layer->CreateFeature(feature.get()) != OGRERR_NONE) throw std::runtime_error("no row");
    }
}

std::string big_endian(std::uint32_t value) {
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(value >> static_cast<unsigned>(shift));
    return bytes;
}

}  // namespace

void make_geopackage(const fs::path& file, const std::vector<std::string>& statements) {
    for (const char* ending : {"", "-journal", "-wal", "-shm"}) fs::remove(file.string() + ending);
    make_plain(file);
    const Database database(file);
    database.Run("PRAGMA writable_schema=1");
    for (const std::string& statement : statements) database.Run(statement);
}

std::string schema_entry(const std::string& type, const std::string& name, const std::string& sql) {
    const std::string quoted = in_quotes(name);
    return "INSERT INTO sqlite_master VALUES('" + type + "'," + quoted + "," + quoted + ",0," + in_quotes(sql) + ")";
}

std::string told_as_layer(const std::string& name) {
    const std::string quoted = in_quotes(name);
    return "INSERT INTO gpkg_contents(table_name,data_type,identifier,srs_id) VALUES(" + quoted + ",'features'," +
           quoted + ",32633); INSERT INTO gpkg_geometry_columns VALUES(" + quoted + ",'geom','POINT',32633,0,0)";
}

void leave_half_changed(const fs::path& file) {
    const fs::path journal = file.string() + "-journal";
    const fs::path folder = file.parent_path();
    {
        const Database database(file);
        // So small a cache that pages are written before the end.
        database.Run("PRAGMA cache_size=1; BEGIN IMMEDIATE; CREATE TABLE half(a)");
        for (int i = 0; i < 200; ++i) database.Run("INSERT INTO half VALUES(hex(zeroblob(500)))");
        fs::copy_file(file, folder / "half");
        fs::copy_file(journal, folder / "half-journal");
        database.Run("ROLLBACK");
    }
    fs::rename(folder / "half", file);
    fs::rename(folder / "half-journal", journal);
}

void name_common_journal(const fs::path& file, const fs::path& named) {
    constexpr std::uint32_t kPage = 4096;
    constexpr std::uint32_t kPendingByte = 0x40000000;
    std::uint32_t sum = 0;
    for (const char c : named.string()) sum += static_cast<unsigned char>(c);
    const auto length = static_cast<std::uint32_t>(named.string().size());
    std::ofstream(file.string() + "-journal", std::ios::binary | std::ios::app)
        << big_endian(kPendingByte / kPage + 1) << named.string() << big_endian(length) << big_endian(sum)
        << "\xd9\xd5\x05\xf9\x20\xa1\x63\xd7";
}

void turn_to_logging(const fs::path& file) {
    Database(file).Run("PRAGMA journal_mode=WAL");
}

void leave_log(const fs::path& file) {
    const fs::path kept = file.string() + ".kept";
    {
        const Database database(file);
        database.Run("PRAGMA journal_mode=WAL; CREATE TABLE half(a); INSERT INTO half VALUES(1)");
        for (const char* ending : {"", "-wal", "-shm"}) fs::copy_file(file.string() + ending, kept.string() + ending);
    }
    for (const char* ending : {"", "-wal", "-shm"}) fs::rename(kept.string() + ending, file.string() + ending);
}

}  // namespace wxl::tests
