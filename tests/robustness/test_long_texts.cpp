// Texts of tens of megabytes in one field, in every format: refused soon and in little memory, by what reads layers and
// by wxl import.

#include "adapters/gdal/gdal_support.h"
#include "tests/robustness/malformed.h"

#include <cpl_vsi.h>
#include <filesystem>
#include <gmock/gmock.h>
#include <ogrsf_frmts.h>

namespace wxl::tests {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

class LongTexts : public testing::Test {
protected:
    /// Each command refuses the file, in these words where there are some of its own.
    void ExpectRefused(const std::string& name, const std::string& words = "", bool isLayer = true) const {
        const std::string input = m_folder / name;
        std::vector<std::vector<std::string>> calls = {
            {"import", input, m_folder / "o.shp", "--from-crs", "EPSG:32633", "--overwrite"}};
        if (isLayer) {
            calls.push_back({"info", input});
            calls.push_back({"mcp", input, "--id-field", "animal", "--degrees"});
        }
        for (const auto& call : calls) {
            SCOPED_TRACE(call.front() + " " + name);
            const LimitedRun run = run_limited(call, m_folder.Path());
            expect_defined(run, Expected::kRefused, name);
            EXPECT_THAT(run.Err, HasSubstr(words));
            EXPECT_FALSE(fs::exists(m_folder / "o.shp"));
        }
        fs::remove_all(input);
    }

    void Put(const std::string& name, const std::string& before, const std::string& after) const {
        write_bytes(m_folder / name, before + std::string(kLong, 'a') + after);
    }

    static constexpr std::size_t kLong = 100'000'000;
    ScratchFolder m_folder;
};

const char* const kLongXml = " holds a text of more than 16 MB that begins at the byte ";

TEST_F(LongTexts, In_separated_values) {
    Put("long.csv", "animal,x,y,timestamp\na,500000,5000000,2018-05-09\n", ",500400,5000300,2018-05-10\n");
    ExpectRefused("long.csv", ", line 3: a record of more than 16 MB", false);
    Put("wkt.csv", "WKT,animal\n\"POINT (1 2)\",a\n\"POINT (3 4)\",", "\n");
    ExpectRefused("wkt.csv");
}

TEST_F(LongTexts, In_JSON) {
    const std::string row =
        R"({"type":"Feature","geometry":{"type":"Point","coordinates":[1,2]},"properties":{"animal":")";
    Put("long.geojson", R"({"type":"FeatureCollection","features":[)" + row + "b\"}}," + row, "\"}}]}");
    ExpectRefused("long.geojson");
    Put("long.geojsonl", row + "b\"}}\n" + row, "\"}}\n");
    ExpectRefused("long.geojsonl");
}

TEST_F(LongTexts, In_XML) {
    Put("long.kml", R"(<?xml version="1.0"?><kml xmlns="http://www.opengis.net/kml/2.2"><Document><Placemark><name>)",
        "</name><Point><coordinates>15,45</coordinates></Point></Placemark></Document></kml>");
    ExpectRefused("long.kml", kLongXml);
    Put("long.gpx",
        R"(<?xml version="1.0"?><gpx version="1.1" creator="x" xmlns="http://www.topografix.com/GPX/1/1">)"
        R"(<wpt lat="45.2" lon="15.1"><name>)",
        "</name></wpt></gpx>");
    ExpectRefused("long.gpx", kLongXml);
}

TEST_F(LongTexts, In_a_workbook_that_is_small_on_disk) {
    const std::string archive = m_folder / "long.zip";
    const auto put = [&](const std::string& name, const std::string& text) {
        VSILFILE* file = VSIFOpenL(("/vsizip/" + archive + "/" + name).c_str(), "wb");
        ASSERT_NE(file, nullptr);
        VSIFWriteL(text.data(), 1, text.size(), file);
        VSIFCloseL(file);
    };
    files::RegisterGdal();
    put("[Content_Types].xml", "<Types/>");
    put("xl/worksheets/sheet1.xml", "<worksheet><sheetData><row r=\"1\"><c r=\"A1\" t=\"inlineStr\"><is><t>" +
                                        std::string(kLong, 'a') + "</t></is></c></row></sheetData></worksheet>");
    fs::rename(archive, m_folder / "long.xlsx");
    EXPECT_LT(fs::file_size(m_folder / "long.xlsx"), 1'000'000U);
    ExpectRefused("long.xlsx", kLongXml, false);
}

TEST_F(LongTexts, In_rows_of_binary_formats) {
    files::RegisterGdal();
    for (const auto& [driver, name] :
         std::vector<std::pair<std::string, std::string>>{{"FlatGeobuf", "long.fgb"}, {"GPKG", "long.gpkg"}}) {
        GDALDriver* made = GetGDALDriverManager()->GetDriverByName(driver.c_str());
        const files::GdalDatasetPtr dataset(made->Create((m_folder / name).c_str(), 0, 0, 0, GDT_Unknown, nullptr));
        OGRSpatialReference zone = files::ToOgr(files::ReferenceFromText("EPSG:32633"));
        OGRLayer* layer = dataset->CreateLayer("long", &zone, wkbPoint);
        OGRFieldDefn animal("animal", OFTString);
        ASSERT_EQ(layer->CreateField(&animal), OGRERR_NONE);
        for (const std::size_t length : {std::size_t{1}, std::size_t{50'000'000}}) {
            const OGRFeatureUniquePtr row(OGRFeature::CreateFeature(layer->GetLayerDefn()));
            row->SetField(0, std::string(length, 'a').c_str());
            const OGRPoint point(500000.0 + static_cast<double>(length), 5000000.0);
            row->SetGeometry(&point);
            ASSERT_EQ(layer->CreateFeature(row.get()), OGRERR_NONE);
        }
    }
    for (const char* name : {"long.fgb", "long.gpkg"}) {
        const LimitedRun run = run_limited({"mcp", m_folder / name, "--id-field", "animal"}, m_folder.Path());
        EXPECT_THAT(run.Err, HasSubstr(" holds a text of more than 16 MB in the field \"animal\": shorten it, or leave "
                                       "the row out"));
        expect_defined(run, Expected::kRefused, name);
        const LimitedRun import = run_limited({"import", m_folder / name, m_folder / "o.shp"}, m_folder.Path());
        EXPECT_THAT(import.Err, HasSubstr(" holds a text of more than 16 MB in the field \"animal\": shorten it, or "
                                          "leave the row out"));
        expect_defined(import, Expected::kRefused, name);
    }
}

}  // namespace
}  // namespace wxl::tests
