// Broken tracking tables through wxl import, and broken layers of other formats through wxl info.

#include "tests/robustness/malformed.h"

#include <filesystem>

namespace wxl::tests {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;

class MalformedTable : public testing::Test {
protected:
    void Expect(const std::string& name, Expected expected) const {
        SCOPED_TRACE(name);
        const LimitedRun run =
            run_limited({"import", m_folder / name, m_folder / "o.shp", "--overwrite"}, m_folder.Path());
        expect_defined(run, expected, name);
        if (expected == Expected::kRefused) {
            EXPECT_FALSE(fs::exists(m_folder / "o.shp"));
        }
        std::error_code ignored;
        fs::remove(m_folder / "o.shp", ignored);
    }
    void ExpectText(const std::string& name, const std::string& bytes, Expected expected) const {
        write_bytes(m_folder / name, bytes);
        Expect(name, expected);
    }

    ScratchFolder m_folder;
    const std::string m_header = "animal,x,y,timestamp\n";
    const std::string m_rows = "a,12.5,55.5,2018-05-09 14:00:00\nb,12.6,55.6,2018-05-09 15:00:00\n";
};

TEST_F(MalformedTable, Cut_off_at_every_32nd) {
    std::string table = m_header;
    for (int i = 0; i < 20; ++i) table += m_rows;
    for (std::size_t part = 0; part < 32; ++part)
        ExpectText("cut" + std::to_string(part) + ".csv", table.substr(0, table.size() * part / 32),
                   part == 0 ? Expected::kRefused : Expected::kEither);
}

TEST_F(MalformedTable, Tables_that_cannot_be_read) {
    ExpectText("empty.csv", "", Expected::kRefused);
    ExpectText("blank.csv", "\n\r\n  \n\t\n", Expected::kRefused);
    ExpectText("header.csv", m_header, Expected::kRefused);
    ExpectText("open_quote.csv", m_header + "\"a,12.5,55.5,\n" + m_rows, Expected::kRefused);
    ExpectText("short_row.csv", m_header + "a,12.5\n", Expected::kRefused);
    ExpectText("long_row.csv", m_header + "a,12.5,55.5,2018-05-09 14:00:00,,,,,,\n", Expected::kRefused);
    ExpectText("no_number.csv", m_header + "a,twelve,55.5,2018-05-09 14:00:00\n", Expected::kRefused);
    ExpectText("infinite.csv", m_header + "a,inf,1e999,2018-05-09 14:00:00\n", Expected::kRefused);
    ExpectText("absurd.csv", m_header + "a,1e308,-1e308,2018-05-09 14:00:00\n", Expected::kRefused);
    ExpectText("no_time.csv", m_header + "a,12.5,55.5,99999999999-05-09\n", Expected::kRefused);
    ExpectText("utf16.csv", "\xFF\xFE\x61\0n\0"s, Expected::kRefused);
    ExpectText("zeros.csv", std::string(100000, '\0'), Expected::kRefused);
    ExpectText("zeros_in_rows.csv", m_header + "a\0b,12.5\0,55.5,2018-05-09 14:00:00\n"s, Expected::kRefused);
    ExpectText("long_name.csv", m_header + std::string(100000, 'a') + ",12.5,55.5,2018-05-09 14:00:00\n",
               Expected::kRefused);
    ExpectText("long_number.csv", m_header + "a,1" + std::string(1 << 20, '0') + ",55.5,2018-05-09 14:00:00\n",
               Expected::kRefused);
    ExpectText("no_columns.csv", "a,b,c\n1,2,3\n", Expected::kRefused);
    ExpectText("invalid_utf8.csv", m_header + "\xC3\x28\xFF,12.5,55.5,2018-05-09 14:00:00\n", Expected::kEither);
    ExpectText("same_columns.csv", "animal,animal,x,x,y,y\n1,2,3,4,5,6\n", Expected::kEither);
    fs::create_directory(m_folder / "folder.csv");
    Expect("folder.csv", Expected::kRefused);
    Expect("absent.csv", Expected::kRefused);
}

TEST_F(MalformedTable, A_line_of_100_MB) {
    write_bytes(m_folder / "line.csv", m_header);
    fs::resize_file(m_folder / "line.csv", 100'000'000);
    Expect("line.csv", Expected::kRefused);
    write_bytes(m_folder / "quote.csv", m_header + "\"");
    fs::resize_file(m_folder / "quote.csv", 100'000'000);
    Expect("quote.csv", Expected::kRefused);
    write_bytes(m_folder / "first_line.csv", "animal");
    fs::resize_file(m_folder / "first_line.csv", 100'000'000);
    Expect("first_line.csv", Expected::kRefused);
}

TEST_F(MalformedTable, A_million_columns) {
    ExpectText("commas.csv", std::string(1'000'000, ',') + "\n", Expected::kRefused);
    ExpectText("commas_in_a_row.csv", m_header + std::string(1'000'000, ',') + "\n", Expected::kRefused);
    std::string wide = "animal,x,y";
    std::string row = "a,12.5,55.5";
    for (int i = 0; i < 1'000'000; ++i) wide += ",c", row += ",1";
    ExpectText("wide.csv", wide + "\n" + row + "\n", Expected::kEither);
    ExpectText("quotes.csv", std::string(1'000'000, '"') + "\n", Expected::kRefused);
}

TEST_F(MalformedTable, Other_layers) {
    const auto expect = [&](const std::string& name, const std::string& bytes) {
        SCOPED_TRACE(name);
        write_bytes(m_folder / name, bytes);
        expect_defined(run_limited({"info", m_folder / name}, m_folder.Path()), Expected::kRefused, name);
    };
    expect("empty.geojson", "");
    expect("cut.geojson", R"({"type":"FeatureCollection","features":[{"type":"Feature","geometry":{"type":"Po)");
    expect("deep.geojson", R"({"type":"FeatureCollection","features":)" + std::string(100000, '['));
    expect("no_points.geojson", R"({"type":"FeatureCollection","features":[]})");
    expect("empty.gpkg", "");
    expect("header.gpkg", std::string("SQLite format 3\0", 16));
    expect("noise.gpkg", std::string("SQLite format 3\0", 16) + std::string(100000, '\x05'));
    expect("noise.fgb", std::string("fgb\x03"
                                    "fgb\x00",
                                    8) +
                            std::string(1000, '\xFF'));
    expect("text.shp", "no shapefile at all, but a text that is long enough to be one: " + std::string(200, '.'));
    expect("bomb.gpx",
           "<?xml version=\"1.0\"?><!DOCTYPE gpx [<!ENTITY a \"aaaaaaaaaaaaaaaaaaaa\"><!ENTITY b "
           "\"&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;\"><!ENTITY c \"&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;\"><!ENTITY d "
           "\"&c;&c;&c;&c;&c;&c;&c;&c;&c;&c;\"><!ENTITY e \"&d;&d;&d;&d;&d;&d;&d;&d;&d;&d;\"><!ENTITY f "
           "\"&e;&e;&e;&e;&e;&e;&e;&e;&e;&e;\">]><gpx version=\"1.1\"><wpt lat=\"1\" lon=\"2\"><name>&f;&f;&f;&f;&f;"
           "</name></wpt></gpx>");
}

}  // namespace
}  // namespace wxl::tests
