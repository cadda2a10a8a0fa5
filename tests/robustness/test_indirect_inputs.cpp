// Inputs that read more than they say: the program opens files that hold the data themselves, and nothing that they
// mention, unless --allow-indirect is given.

#include "tests/robustness/hostile_databases.h"
#include "tests/robustness/malformed.h"

#include <arpa/inet.h>
#include <array>
#include <cmath>
#include <filesystem>
#include <sys/inotify.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace wxl::tests {
namespace {

namespace fs = std::filesystem;

/// Counts how often files of a folder are opened.
class OpeningsOf {
public:
    explicit OpeningsOf(const fs::path& folder) : m_descriptor(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
        ::inotify_add_watch(m_descriptor, folder.c_str(), IN_OPEN | IN_ACCESS);
    }
    ~OpeningsOf() { ::close(m_descriptor); }
    OpeningsOf(const OpeningsOf&) = delete;
    OpeningsOf& operator=(const OpeningsOf&) = delete;

    /// Whether any was opened since the last call.
    bool Any() const {
        std::array<char, 65536> events{};
        return ::read(m_descriptor, events.data(), events.size()) > 0;
    }

private:
    int m_descriptor;
};

/// A server that nobody should call.
class Listener {
public:
    Listener() : m_socket(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)) {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        auto* any = reinterpret_cast<sockaddr*>(&address);
        if (::bind(m_socket, any, length) == 0 && ::listen(m_socket, 5) == 0 &&
            ::getsockname(m_socket, any, &length) == 0)
            m_port = ntohs(address.sin_port);
    }
    ~Listener() { ::close(m_socket); }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    std::string Address() const { return "http://127.0.0.1:" + std::to_string(m_port); }
    bool WasCalled() const { return ::accept(m_socket, nullptr, nullptr) >= 0; }

private:
    int m_socket;
    int m_port = 0;
};

class IndirectInput : public testing::Test {
protected:
    void SetUp() override {
        fs::create_directory(m_folder / "other");
        write_bytes(m_folder / "other" / "t.csv", "animal,x,y\na,500000,6000000\na,500400,6000300\na,500100,6000200\n");
        const LimitedRun made =
            run_limited({"import", m_folder / "other" / "t.csv", m_other, "--from-crs", "EPSG:32633"}, m_folder.Path());
        ASSERT_EQ(made.Code, 0) << made.Err;
        const LimitedRun raster =
            run_limited({"kde", m_other, "--id-field", "animal", "--out", m_folder / "other" / "k", "--cell-size", "50",
                         "--prefix", "K", "--extent", "min"},
                        m_folder.Path());
        ASSERT_EQ(raster.Code, 0) << raster.Err;
    }

    fs::path Make(const std::string& name, const std::string& bytes) const {
        write_bytes(m_folder / name, bytes);
        return m_folder / name;
    }

    std::string ErrorOf(const std::vector<std::string>& arguments) const {
        const LimitedRun run = run_limited(arguments, m_folder.Path());
        EXPECT_EQ(run.Code, 1) << run.Out << run.Err;
        EXPECT_EQ(run.Out, "");
        return run.Err;
    }

    /// A vector input refused by every command that takes one, with nothing in the other folder opened.
    void ExpectRefused(const std::string& input, const std::string& why) const {
        SCOPED_TRACE(input);
        const OpeningsOf openings(m_folder / "other");
        const std::string message = "wxl: " + why + ", or give --allow-indirect\n";
        EXPECT_EQ(ErrorOf({"info", input}), message);
        EXPECT_EQ(ErrorOf({"stats", input, "--id-field", "a"}), message);
        EXPECT_EQ(ErrorOf({"bandwidth", input, "--id-field", "a", "--method", "href"}), message);
        EXPECT_EQ(ErrorOf({"kde", input, "--id-field", "a", "--out", m_folder / "o", "--cell-size", "9"}), message);
        EXPECT_EQ(ErrorOf({"obs-fields", input, "--yes"}), message);
        EXPECT_EQ(ErrorOf({"remove-duplicates", input, "--by", "xy"}), message);
        EXPECT_EQ(ErrorOf({"track", input, m_folder / "t.shp"}), message);
        EXPECT_FALSE(openings.Any()) << "a file that was not named was opened";
    }
    void ExpectElsewhere(const std::string& input) const {
        ExpectRefused(input, input + " leads to data elsewhere: name the file that holds them");
    }

    /// The same for rasters.
    void ExpectRasterRefused(const std::string& input, const std::string& why) const {
        SCOPED_TRACE(input);
        const OpeningsOf openings(m_folder / "other");
        const std::string message = "wxl: " + why + ", or give --allow-indirect\n";
        EXPECT_EQ(ErrorOf({"isopleths", input, "--levels", "50", "--out", m_folder / "o", "--name", "n"}), message);
        EXPECT_FALSE(openings.Any()) << "a file that was not named was opened";
        EXPECT_EQ(
            ErrorOf({"kde", m_other, "--id-field", "animal", "--out", m_folder / "o", "--extent", "ref:" + input}),
            message);
    }
    void ExpectRasterElsewhere(const std::string& input) const {
        ExpectRasterRefused(input, input + " leads to data elsewhere: name the file that holds them");
    }

    std::string VirtualLayer() const {
        return "<OGRVRTDataSource><OGRVRTLayer name=\"layer\"><SrcDataSource>" + m_other.string() +
               "</SrcDataSource><SrcLayer>t</SrcLayer></OGRVRTLayer></OGRVRTDataSource>" + std::string(200, ' ');
    }
    std::string VirtualRaster() const {
        return "<VRTDataset rasterXSize=\"9\" rasterYSize=\"9\"><GeoTransform>0,1,0,9,0,-1</GeoTransform>"
               "<VRTRasterBand dataType=\"Float32\" band=\"1\"><SimpleSource><SourceFilename>" +
               (m_folder / "other").string() +
               "/k/K1</SourceFilename><SourceBand>1</SourceBand></SimpleSource></VRTRasterBand></VRTDataset>";
    }

    ScratchFolder m_folder;
    fs::path m_other = m_folder.Path() / "other" / "t.shp";
};

TEST_F(IndirectInput, Addresses_are_refused) {
    for (const std::string input :
         {"/vsicurl/http://127.0.0.1:1/a.shp", "/vsimem/a.shp", "/vsistdin/", "/vsizip/a.zip",
          "http://127.0.0.1:1/a.geojson", "https://example.org/a.shp", "s3://bucket/a.shp", "PG:dbname=x",
          "pg:dbname=x", "MYSQL:x,host=y", "WFS:example.org", "ODBC:x", "SQLITE:a.db", "CSV:a.csv"})
        ExpectElsewhere(input);
    ExpectElsewhere(R"({"type":"Point","coordinates":[1,2]})");
    ExpectElsewhere(VirtualLayer());
    const std::string inArchive = "/vsizip/" + m_other.string() + "/a.shp";
    ExpectElsewhere(inArchive);
    for (const std::string input : {"/vsicurl/http://127.0.0.1:1/a.tif", "http://127.0.0.1:1/a.tif", "WMS:example.org",
                                    "PG:dbname=x table=r", "GTIFF_DIR:1:a.tif", "NETCDF:a.nc:z"})
        ExpectRasterElsewhere(input);
    ExpectRasterElsewhere(VirtualRaster());
}

TEST_F(IndirectInput, Files_named_like_addresses_are_files) {
    const fs::path here = fs::current_path();
    fs::current_path(m_folder.Path());
    write_bytes("PG:dbname=x", bytes_of(m_other));
    const std::string told = ErrorOf({"info", "PG:dbname=x"});
    fs::current_path(here);
    EXPECT_EQ(told.find("--allow-indirect"), std::string::npos) << told;
    EXPECT_NE(told.find("PG:dbname=x could not be read"), std::string::npos) << told;
}

TEST_F(IndirectInput, Virtual_datasets_are_refused_whatever_their_name) {
    for (const char* name : {"a.vrt", "a.shp", "a.gpkg", "a.txt", "a.geojson", "a"})
        ExpectElsewhere(Make(name, VirtualLayer()));
    ExpectElsewhere(Make("b.geojson", "<OGRWFSDataSource><URL>http://127.0.0.1:1</URL></OGRWFSDataSource>"));
    for (const char* name : {"r.vrt", "r.tif", "r.asc", "r"}) ExpectRasterElsewhere(Make(name, VirtualRaster()));
    ExpectRasterElsewhere(Make("wms.tif",
                               "<GDAL_WMS><Service name=\"TMS\"><ServerUrl>http://127.0.0.1:1</ServerUrl>"
                               "</Service></GDAL_WMS>"));
    const fs::path plain = m_folder / "named.vrt:layer";
    Make("named.vrt", VirtualLayer());
    EXPECT_EQ(ErrorOf({"info", plain}), "wxl: " + (m_folder / "named.vrt").string() +
                                            " leads to data elsewhere: name the file that holds them, or give "
                                            "--allow-indirect\n");
}

TEST_F(IndirectInput, Allowed_ones_are_read) {
    const fs::path layer = Make("a.vrt", VirtualLayer());
    const LimitedRun run = run_limited({"info", layer, "--allow-indirect"}, m_folder.Path());
    EXPECT_EQ(run.Code, 0) << run.Err;
    EXPECT_NE(run.Out.find("points   3"), std::string::npos) << run.Out;
    const fs::path raster = Make("r.vrt", VirtualRaster());
    EXPECT_EQ(run_limited({"kde", layer, "--id-field", "animal", "--out", m_folder / "o", "--extent",
                           "ref:" + raster.string(), "--allow-indirect", "--dry-run"},
                          m_folder.Path())
                  .Err.find("--allow-indirect"),
              std::string::npos);
    const std::string linked = "/vsisubfile/0_100000," + (m_folder / "points.geojson").string();
    Make("points.geojson", R"({"type":"Feature","properties":{},"geometry":{"type":"Point","coordinates":[1,2]}})");
    EXPECT_EQ(run_limited({"info", linked, "--allow-indirect"}, m_folder.Path()).Code, 0);
}

TEST_F(IndirectInput, Pipes_and_devices_are_refused_even_beside_the_data) {
    const auto why = [](const fs::path& path) {
        return path.string() + " is a pipe or a device and no file: copy its data into a file";
    };
    const fs::path device = m_folder / "zero.shp";
    fs::create_symlink("/dev/zero", device);
    ExpectRefused(device, why(device));
    const fs::path pipe = m_folder / "pipe.geojson";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    ExpectRefused(pipe, why(pipe));
    ExpectRasterRefused(pipe, why(pipe));
    EXPECT_EQ(ErrorOf({"import", pipe, m_folder / "i.shp"}), "wxl: " + why(pipe) + ", or give --allow-indirect\n");

    for (const char* extension : {"dbf", "shx", "prj", "cpg", "qix"}) {
        const fs::path folder = m_folder / (std::string("beside_") + extension);
        fs::create_directory(folder);
        for (const char* part : {"shp", "shx", "dbf", "prj"})
            if (std::string(part) != extension)
                fs::copy_file(m_folder / "other" / (std::string("t.") + part), folder / (std::string("t.") + part));
        const fs::path side = folder / (std::string("t.") + extension);
        ASSERT_EQ(::mkfifo(side.c_str(), 0600), 0);
        EXPECT_EQ(ErrorOf({"info", folder / "t.shp"}), "wxl: " + why(side) + ", or give --allow-indirect\n");
    }
    const fs::path grid = m_folder / "other" / "k" / "K1";
    for (const fs::path& side : {grid / "vat.adf", fs::path(grid.string() + ".aux.xml")}) {
        ASSERT_EQ(::mkfifo(side.c_str(), 0600), 0);
        EXPECT_EQ(ErrorOf({"isopleths", grid, "--levels", "50", "--out", m_folder / "o", "--name", "n"}),
                  "wxl: " + why(side) + ", or give --allow-indirect\n");
        fs::remove(side);
    }
}

TEST_F(IndirectInput, Pipes_in_the_place_of_settings_and_reports_end_a_run_at_once) {
    const auto why = [](const fs::path& path) {
        return path.string() + " is a pipe or a device and no file: give a file, or take it out of the way";
    };
    const fs::path settings = m_folder / "settings";
    ASSERT_EQ(::mkfifo(settings.c_str(), 0600), 0);
    fs::create_directory(m_folder / "o");
    const fs::path report = m_folder / "o" / "WXL_KDE_ANALYSIS.txt";
    std::vector<std::string> call = {"kde",          m_other,       "--id-field", "animal",   "--out",
                                     m_folder / "o", "--cell-size", "50",         "--extent", "min"};
    ASSERT_EQ(::mkfifo(report.c_str(), 0600), 0);
    const LimitedRun reporting = run_limited(call, m_folder.Path());
    EXPECT_EQ(reporting.Code, 1) << reporting.Out;
    EXPECT_NE(reporting.Err.find(why(report)), std::string::npos) << reporting.Err;
    fs::remove(report);
    call.insert(call.end(), {"--settings", settings});
    const LimitedRun loading = run_limited(call, m_folder.Path());
    EXPECT_EQ(loading.Code, 1) << loading.Out;
    EXPECT_EQ(loading.Err, "wxl: " + settings.string() + ": these settings cannot be read; is it a settings file?\n");
    fs::create_directory(m_folder / "b");
    ASSERT_EQ(::mkfifo((m_folder / "b" / "plan.json").c_str(), 0600), 0);
    const LimitedRun planned = run_limited({"batch", "status", m_folder / "b"}, m_folder.Path());
    EXPECT_EQ(planned.Code, 1) << planned.Out;
    EXPECT_EQ(planned.Signal, 0);
}

TEST_F(IndirectInput, Archives_are_refused) {
    for (const char* name : {"a.zip", "a.shz", "a.shp.zip", "a.gpkg", "a.kmz", "a.shp"}) {
        const fs::path file = Make(name, "PK\x03\x04" + std::string(200, 'x'));
        ExpectRefused(file, file.string() + " is an archive: unpack it and name the file in it");
    }
    const fs::path packed = Make("t.csv.gz", "\x1F\x8B" + std::string(200, 'x'));
    EXPECT_EQ(
        ErrorOf({"import", packed, m_folder / "i.shp"}),
        "wxl: " + packed.string() + " is an archive: unpack it and name the file in it, or give --allow-indirect\n");
}

TEST_F(IndirectInput, Formats_that_can_point_elsewhere_are_refused) {
    const auto why = [](const fs::path& file, const std::string& format) {
        return file.string() + " is of a format (" + format +
               ") that may lead to data elsewhere: convert it to a shapefile or GeoPackage";
    };
    const fs::path seamless = Make("t.tab",
                                   "!table\n!version 300\n!charset WindowsLatin1\n\nDefinition Table\n"
                                   "  Type NATIVE Charset \"WindowsLatin1\"\n  Fields 1\n    Table Char (255);\n"
                                   "begin_metadata\n\"\\IsSeamless\" = \"TRUE\"\nend_metadata\n");
    ExpectRefused(seamless, why(seamless, "MapInfo File"));
    const fs::path gml =
        Make("t.gml", "<?xml version=\"1.0\"?><!DOCTYPE a [<!ENTITY x SYSTEM \"file://" + m_other.string() +
                          "\">]><ogr:FeatureCollection xmlns:ogr=\"http://ogr.maptools.org/\" "
                          "xmlns:gml=\"http://www.opengis.net/gml\">&x;</ogr:FeatureCollection>");
    ExpectRefused(gml, why(gml, "GML"));
}

TEST_F(IndirectInput, Xml_entities_of_other_files_are_not_read) {
    const OpeningsOf openings(m_folder / "other");
    const std::string entity = "<?xml version=\"1.0\"?><!DOCTYPE a [<!ENTITY x SYSTEM \"file://" +
                               (m_folder / "other" / "t.csv").string() + "\">]>";
    const fs::path gpx =
        Make("t.gpx", entity + "<gpx version=\"1.1\"><wpt lat=\"1\" lon=\"2\"><name>&x;</name></wpt></gpx>");
    const LimitedRun run = run_limited({"info", gpx.string() + ":waypoints"}, m_folder.Path());
    EXPECT_EQ(run.Out.find("animal,x,y"), std::string::npos);
    const fs::path kml = Make("t.kml", entity +
                                           "<kml xmlns=\"http://www.opengis.net/kml/2.2\"><Document><Placemark><name>"
                                           "&x;</name><Point><coordinates>1,2</coordinates></Point></Placemark>"
                                           "</Document></kml>");
    run_limited({"info", kml}, m_folder.Path());
    EXPECT_FALSE(openings.Any());
}

TEST_F(IndirectInput, Coordinate_systems_are_neither_fetched_nor_read_from_other_files) {
    const OpeningsOf openings(m_folder / "other");
    const Listener listener;
    const std::string rest =
        R"("features":[{"type":"Feature","properties":{"id":1},"geometry":{"type":"Point","coordinates":[1,2]}}]})";
    const std::string start = R"({"type":"FeatureCollection","crs":{"type":)";
    int number = 0;
    for (const std::string& crs :
         {R"("link","properties":{"href":")" + listener.Address() + R"(/a.wkt","type":"ogcwkt"}},)",
          R"("link","properties":{"url":")" + listener.Address() + R"(/a.wkt","type":"ogcwkt"}},)",
          R"("url","properties":{"url":")" + listener.Address() + R"(/a.wkt"}},)",
          R"("name","properties":{"name":")" + listener.Address() + R"(/a.wkt"}},)",
          R"("name","properties":{"name":")" + (m_folder / "other" / "t.prj").string() + R"("}},)",
          R"("file","properties":{"name":")" + (m_folder / "other" / "t.prj").string() + R"("}},)"}) {
        const fs::path file = Make(std::to_string(++number) + ".geojson", start + crs + rest);
        const LimitedRun run = run_limited({"info", file}, m_folder.Path());
        EXPECT_EQ(run.Signal, 0);
        EXPECT_FALSE(listener.WasCalled()) << crs;
        EXPECT_FALSE(openings.Any()) << crs;
    }
}

TEST_F(IndirectInput, Grids_that_coordinate_systems_name_are_not_opened) {
    const std::string grid = m_folder / "other" / "t.csv";
    const std::string start = R"(PROJCS["x",GEOGCS["g",DATUM["d",SPHEROID["GRS 1980",6378137,298.257222101])";
    const std::string end =
        R"(],PRIMEM["Greenwich",0],UNIT["degree",0.0174532925199433]],PROJECTION["Transverse_Mercator"],)"
        R"(PARAMETER["latitude_of_origin",0],PARAMETER["central_meridian",15],PARAMETER["scale_factor",0.9996],)"
        R"(PARAMETER["false_easting",500000],PARAMETER["false_northing",0],UNIT["metre",1]])";
    const std::string wkt = start + R"(,EXTENSION["PROJ4_GRIDS",")" + grid + R"("])" + end;
    const auto why = [&](const fs::path& file) {
        return file.string() + " has a coordinate system that needs another file (" + grid +
               "): take that file out of the coordinate system";
    };
    for (const char* extension : {".shp", ".shx", ".dbf"})
        fs::copy_file(fs::path(m_other).replace_extension(extension), m_folder / (std::string("g") + extension));
    ExpectRefused(m_folder / "g.shp", (Make("g.prj", wkt), why(m_folder / "g.prj")));
    EXPECT_EQ(run_limited({"info", m_folder / "g.shp", "--allow-indirect"}, m_folder.Path()).Signal, 0);

    const fs::path database = m_folder / "g.gpkg";
    make_geopackage(database, {"UPDATE gpkg_spatial_ref_sys SET organization = 'NONE', definition = '" + wkt +
                               "' WHERE srs_id = 32633"});
    ExpectRefused(database, why(database));

    const fs::path features = Make(
        "g.geojson", R"({"type":"FeatureCollection","crs":{"type":"name","properties":{"name":"+proj=utm +zone=33 )"
                     R"(+ellps=GRS80 +nadgrids=)" +
                         grid +
                         R"( +type=crs"}},"features":[{"type":"Feature","properties":{"id":1},"geometry":)"
                         R"({"type":"Point","coordinates":[1,2]}}]})");
    ExpectRefused(features, why(features));

    write_bytes(m_folder / "g.asc", "ncols 2\nnrows 2\nxllcorner 0\nyllcorner 0\ncellsize 10\n1 2\n3 4\n");
    ExpectRasterRefused(m_folder / "g.asc", why(m_folder / "g.asc"));
    fs::copy(m_folder / "other" / "k" / "K1", m_folder / "G", fs::copy_options::recursive);
    write_bytes(m_folder / "G" / "prj.adf", wkt);
    ExpectRasterRefused(m_folder / "G", why(m_folder / "G"));
    // The systems of web maps name a grid that is none.
    write_bytes(m_folder / "g.prj",
                R"(PROJCS["x",GEOGCS["g",DATUM["d",SPHEROID["WGS 84",6378137,298.257223563]],PRIMEM["Greenwich",0],)"
                R"(UNIT["degree",0.0174532925199433]],PROJECTION["Mercator_1SP"],PARAMETER["central_meridian",0],)"
                R"(PARAMETER["scale_factor",1],PARAMETER["false_easting",0],PARAMETER["false_northing",0],)"
                R"(UNIT["metre",1],EXTENSION["PROJ4","+proj=merc +a=6378137 +b=6378137 +lat_ts=0 +lon_0=0 +x_0=0 )"
                R"(+y_0=0 +k=1 +units=m +nadgrids=@null +wktext +no_defs"]])");
    EXPECT_EQ(run_limited({"info", m_folder / "g.shp"}, m_folder.Path()).Code, 0);
}

TEST_F(IndirectInput, Side_files_that_name_other_files_are_not_followed) {
    const std::string aux = "<PAMDataset><Metadata domain=\"OVERVIEWS\"><MDI key=\"OVERVIEW_FILE\">" +
                            (m_folder / "other" / "k" / "K1" / "w001001.adf").string() +
                            "</MDI></Metadata><PAMRasterBand band=\"1\"><Description>x</Description></PAMRasterBand>"
                            "</PAMDataset>";
    const std::vector<std::string> tail = {"--levels", "50", "--out", m_folder / "o", "--overwrite", "--name", "n"};
    const auto isopleths = [&](const fs::path& raster) {
        std::vector<std::string> arguments = {"isopleths", raster};
        arguments.insert(arguments.end(), tail.begin(), tail.end());
        const OpeningsOf cells(m_folder / "other" / "k" / "K1");
        const LimitedRun run = run_limited(arguments, m_folder.Path());
        EXPECT_EQ(run.Code, 0) << run.Err;
        EXPECT_FALSE(cells.Any());
    };
    fs::copy(m_folder / "other" / "k" / "K1", m_folder / "G", fs::copy_options::recursive);
    write_bytes(m_folder.Path().string() + "/G.aux.xml", aux);
    isopleths(m_folder / "G");
    std::string ascii = "ncols 9\nnrows 9\nxllcorner 0\nyllcorner 0\ncellsize 10\n";
    for (int i = 0; i < 81; ++i) ascii += std::to_string(40 - std::abs(i - 40)) + " ";
    write_bytes(m_folder / "a.asc", ascii + "\n");
    write_bytes(m_folder / "a.asc.aux.xml", aux);
    isopleths(m_folder / "a.asc");
}

}  // namespace
}  // namespace wxl::tests
