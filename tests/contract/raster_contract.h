#pragma once
#include "tests/contract/stage.h"

#include <gtest/gtest.h>
#include <vector>

namespace wxl::tests {

/// A repeatable raster of `columns` x `rows` cells, none of them like its neighbour.
inline std::vector<float> checked_cells(std::int32_t columns, std::int32_t rows) {
    std::vector<float> cells(static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows));
    std::uint32_t state = 12345;
    for (float& cell : cells) {
        state = state * 1664525U + 1013904223U;
        cell = static_cast<float>(state >> 8) * 1e-3F - 8000.0F;
    }
    return cells;
}

/// All cells of a band, row by row.
inline std::vector<float> cells_of(platform::IRasterBand& band) {
    const auto geometry = band.Geometry();
    const auto columns = static_cast<std::size_t>(geometry.Columns);
    std::vector<float> cells(columns * static_cast<std::size_t>(geometry.Rows));
    for (std::int32_t row = 0; row < geometry.Rows; ++row)
        band.ReadRow(row, std::span(cells).subspan(columns * static_cast<std::size_t>(row), columns));
    return cells;
}

/// Writes all rows of `cells`.
inline void write_rows(platform::IRasterWriter& writer, const platform::RasterDefinition& definition,
                       std::span<const float> cells) {
    const auto columns = static_cast<std::size_t>(definition.Geometry.Columns);
    for (std::size_t first = 0; first < cells.size(); first += columns) writer.WriteRow(cells.subspan(first, columns));
}

/// What every IRasterWorkspace, IRasterWriter, IRasterDataset and IRasterBand does. Instantiate with the adapters and
/// formats to try.
class RasterContract : public testing::TestWithParam<StageChoice> {
protected:
    void SetUp() override { m_stage = GetParam().Make(); }

    Stage& Place() { return *m_stage; }
    platform::IRasterWorkspace& Rasters() { return m_stage->Rasters(); }
    std::filesystem::path Folder() const { return m_stage->Folder(); }
    std::vector<std::string> Names() { return m_stage->Files().List(Folder()); }

    /// The file or folder that a raster of that name is.
    std::string FileNameOf(const std::string& name) const {
        return GetParam().RasterFormat == "GTiff" ? name + ".tif" : name;
    }

    platform::RasterDefinition Define(const std::string& name, const platform::RasterGeometry& geometry) const {
        return {name, GetParam().RasterFormat, geometry, {}};
    }

    std::shared_ptr<platform::IRasterDataset> Make(const platform::RasterDefinition& definition,
                                                   std::span<const float> cells) {
        const auto writer = Rasters().Create(Folder(), definition);
        write_rows(*writer, definition, cells);
        return writer->Publish();
    }

private:
    std::unique_ptr<Stage> m_stage;
};

}  // namespace wxl::tests
