// Broken and cut-off GRID folders and other rasters through wxl isopleths and as the reference raster of wxl kde.

#include "tests/robustness/malformed.h"

#include <filesystem>
#include <limits>
#include <map>

namespace wxl::tests {
namespace {

namespace fs = std::filesystem;

class MalformedGrid : public testing::Test {
protected:
    void SetUp() override {
        std::string rows = "animal,x,y\n";
        for (int i = 0; i < 40; ++i)
            rows += "7," + std::to_string(500000 + 37 * i % 400) + "," + std::to_string(6000000 + 91 * i % 300) + "\n";
        write_bytes(m_folder / "fixes.csv", rows);
        const fs::path fixes = m_folder / "fixes.shp";
        Done({"import", m_folder / "fixes.csv", fixes, "--from-crs", "EPSG:32633"});
        Done({"kde", fixes, "--id-field", "animal", "--out", m_folder / "out", "--cell-size", "20", "--extent", "min",
              "--prefix", "K"});
        for (const auto& entry : fs::directory_iterator(m_folder / "out" / "K1"))
            m_good[entry.path().filename().string()] = bytes_of(entry.path());
        ASSERT_TRUE(m_good.contains("hdr.adf"));
        ASSERT_TRUE(m_good.contains("w001001.adf"));
    }

    void Done(const std::vector<std::string>& arguments) const {
        const LimitedRun run = run_limited(arguments, m_folder.Path());
        ASSERT_EQ(run.Code, 0) << run.Err;
    }

    std::map<std::string, std::string> With(const std::string& file,
                                            const std::function<void(std::string&)>& change) const {
        auto files = m_good;
        change(files[file]);
        return files;
    }

    void Write(const std::map<std::string, std::string>& files) const {
        fs::remove_all(m_folder / "case");
        fs::create_directories(m_folder.Path() / "case" / "g");
        for (const auto& [name, bytes] : files) write_bytes(m_folder.Path() / "case" / "g" / name, bytes);
    }

    void Expect(const std::string& what, const std::map<std::string, std::string>& files, Expected expected) const {
        SCOPED_TRACE(what);
        Write(files);
        const std::string grid = m_folder.Path() / "case" / "g";
        const std::string out = m_folder.Path() / "case" / "o";
        expect_defined(
            run_limited({"isopleths", grid, "--levels", "95,50", "--out", out, "--name", "i"}, m_folder.Path()),
            expected, grid);
        if (expected == Expected::kRefused) {
            EXPECT_FALSE(fs::exists(fs::path(out) / "i_poly.shp"));
        }
    }

    ScratchFolder m_folder;
    std::map<std::string, std::string> m_good;
};

TEST_F(MalformedGrid, The_good_one_is_read) {
    Write(m_good);
    Done({"isopleths", m_folder.Path() / "case" / "g", "--levels", "95,50", "--out", m_folder / "o", "--name", "i"});
}

TEST_F(MalformedGrid, Cut_off_at_every_32nd_of_each_of_its_files) {
    for (const std::string file : {"hdr.adf", "dblbnd.adf", "w001001.adf", "w001001x.adf"})
        for (std::size_t part = 0; part < 32; ++part)
            Expect(file + " cut at " + std::to_string(part) + "/32",
                   With(file, [&](std::string& bytes) { bytes.resize(bytes.size() * part / 32); }), Expected::kRefused);
    for (const std::string file : {"sta.adf", "prj.adf"})
        for (std::size_t part = 0; part < 32; part += 4)
            Expect(file + " cut at " + std::to_string(part) + "/32",
                   With(file, [&](std::string& bytes) { bytes.resize(bytes.size() * part / 32); }), Expected::kEither);
}

TEST_F(MalformedGrid, Missing_files) {
    for (const auto& [name, bytes] : m_good) {
        auto files = m_good;
        files.erase(name);
        const bool needed =
            name == "hdr.adf" || name == "dblbnd.adf" || name == "w001001.adf" || name == "w001001x.adf";
        Expect("without " + name, files, needed ? Expected::kRefused : Expected::kEither);
    }
    Expect("an empty folder", {}, Expected::kRefused);
}

TEST_F(MalformedGrid, Wrong_headers) {
    const auto noise = [](std::string& bytes) {
        std::uint32_t state = 1;
        for (char& c : bytes) c = static_cast<char>((state = state * 1664525U + 1013904223U) >> 24U);
    };
    for (const std::string file : {"hdr.adf", "dblbnd.adf", "w001001x.adf"})
        Expect("noise in " + file, With(file, noise), Expected::kRefused);
    Expect("noise in the cells", With("w001001.adf", noise), Expected::kEither);
    // Offsets in hdr.adf: 16 cell type, 256 cell size, 288 tiles across, 292 tiles down, 296 tile width, 304 tile
    // height.
    for (const std::uint32_t value : {0U, 1000U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU})
        for (const std::size_t offset : {16U, 288U, 292U, 296U, 304U})
            Expect("hdr.adf says " + std::to_string(value) + " at " + std::to_string(offset),
                   With("hdr.adf", [&](std::string& b) { put_big(b, offset, value); }), Expected::kEither);
    const auto put_double = [](std::string& bytes, std::size_t offset, double value) {
        put(bytes, offset, __builtin_bswap64(std::bit_cast<std::uint64_t>(value)));
    };
    for (const double value :
         {0.0, -20.0, 1e-9, 1e300, std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
        Expect("cells of " + std::to_string(value), With("hdr.adf", [&](std::string& b) { put_double(b, 256, value); }),
               Expected::kEither);
        for (const std::size_t offset : {0U, 8U, 16U, 24U})
            Expect("bound " + std::to_string(offset / 8) + " of " + std::to_string(value),
                   With("dblbnd.adf", [&](std::string& b) { put_double(b, offset, value); }), Expected::kEither);
    }
}

TEST_F(MalformedGrid, Tiles_that_would_fill_the_memory) {
    Expect("tiles of 8192 x 8192 cells",
           With("hdr.adf",
                [](std::string& b) {
                    put_big(b, 296, 8192);
                    put_big(b, 304, 8192);
                }),
           Expected::kRefused);
}

TEST_F(MalformedGrid, Tiles_in_the_wrong_place) {
    for (const std::uint32_t value : {0U, 1U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
        Expect("first tile at " + std::to_string(value),
               With("w001001x.adf", [&](std::string& b) { put_big(b, 100, value); }), Expected::kEither);
        Expect("first tile of " + std::to_string(value) + " words",
               With("w001001x.adf", [&](std::string& b) { put_big(b, 104, value); }), Expected::kEither);
        Expect("an index of " + std::to_string(value) + " words",
               With("w001001x.adf", [&](std::string& b) { put_big(b, 24, value); }), Expected::kEither);
    }
}

TEST_F(MalformedGrid, Cells_that_are_no_numbers) {
    for (const float value : {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(), 3.4e38F})
        Expect("cells of " + std::to_string(value),
               With("w001001.adf",
                    [&](std::string& b) {
                        for (std::size_t at = 102; at + 4 <= b.size(); at += 4)
                            put(b, at, __builtin_bswap32(std::bit_cast<std::uint32_t>(value)));
                    }),
               Expected::kEither);
}

TEST_F(MalformedGrid, Reference_raster_of_an_analysis) {
    const auto expect = [&](const std::string& what, const std::map<std::string, std::string>& files,
                            Expected expected) {
        SCOPED_TRACE(what);
        Write(files);
        const std::string grid = m_folder.Path() / "case" / "g";
        expect_defined(run_limited({"kde", m_folder / "fixes.shp", "--id-field", "animal", "--out",
                                    m_folder.Path() / "case" / "o", "--extent", "ref:" + grid},
                                   m_folder.Path()),
                       expected, grid);
    };
    expect("cut header", With("hdr.adf", [](std::string& b) { b.resize(b.size() / 2); }), Expected::kRefused);
    expect("cut bounds", With("dblbnd.adf", [](std::string& b) { b.resize(b.size() / 2); }), Expected::kRefused);
    expect("no grid", {}, Expected::kRefused);
}

TEST_F(MalformedGrid, Files_that_are_no_raster) {
    const auto expect = [&](const std::string& name, const std::string& bytes) {
        SCOPED_TRACE(name);
        write_bytes(m_folder / name, bytes);
        expect_defined(
            run_limited({"isopleths", m_folder / name, "--levels", "95", "--out", m_folder / "o", "--name", "i"},
                        m_folder.Path()),
            Expected::kRefused, name);
    };
    const std::string tiff("II*\0\x08\0\0\0", 8);
    expect("empty.tif", "");
    expect("header.tif", tiff);
    expect("noise.tif", tiff + std::string(10000, '\x07'));
    expect("cut.asc", "ncols 10\nnrows 10\nxllcorner 0\nyllcorner 0\ncellsize 1\n1 2 3\n");
    expect("absurd.asc", "ncols 2000000000\nnrows 2000000000\nxllcorner 0\nyllcorner 0\ncellsize 1\n1 2 3\n");
    expect("negative.asc", "ncols -5\nnrows 10\nxllcorner 0\nyllcorner 0\ncellsize 1\n1 2 3\n");
    expect("text.txt", "no raster at all\n");
}

}  // namespace
}  // namespace wxl::tests
