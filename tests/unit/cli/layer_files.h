#pragma once
#include "tests/support/scratch_folder.h"
#include "tests/unit/cli/captured_console.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <set>
#include <string>

namespace wxl::cli {

/// Writes a file into the folder and returns its path as text.
inline std::string write_file(const tests::ScratchFolder& folder, const std::string& name, const std::string& text) {
    std::ofstream(folder / name, std::ios::binary) << text;
    return (folder / name).string();
}

inline std::string read_file(const std::filesystem::path& file) {
    std::ifstream source(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(source), {}};
}

inline std::set<std::string> names_in(const std::filesystem::path& folder) {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        names.insert(entry.path().filename().string());
    return names;
}

/// A point shapefile in UTM zone 33N made by wxl import from rows "animal,x,y,timestamp".
inline std::string make_layer(const tests::ScratchFolder& folder, const std::string& rows) {
    const std::string csv = write_file(folder, "layer.csv", "animal,x,y,timestamp\n" + rows);
    const std::string layer = (folder / "layer.shp").string();
    const Ran ran = run_wxl({"import", csv, layer, "--from-crs", "EPSG:32633"});
    EXPECT_EQ(ran.Code, 0) << ran.Err;
    return layer;
}

}  // namespace wxl::cli
