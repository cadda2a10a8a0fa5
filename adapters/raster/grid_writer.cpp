#include "adapters/raster/grid_writer.h"

#include "adapters/gdal/gdal_support.h"
#include "adapters/raster/grid_layout.h"
#include "adapters/raster/raster_dataset.h"
#include "adapters/raster/raster_writing.h"
#include "platform/runtime_error.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

namespace wxl::files {

namespace error_number = platform::error_number;

namespace {

// A grid wider than this many tiles opens its files anew for every block row, so as not to run out of handles.
constexpr std::size_t kMostOpenFiles = 64;

/// Minimum, maximum, mean and standard deviation of cells that come by one row at a time. Sums are taken of differences
/// from the first cell, so that large values of small spread keep their deviation.
class Tally {
public:
    void Add(std::span<const float> cells) {
        if (m_count == 0.0) m_shift = static_cast<double>(cells.front());
        double sum = 0.0;
        double squares = 0.0;
        for (const float cell : cells) {
            m_minimum = std::min(m_minimum, cell);
            m_maximum = std::max(m_maximum, cell);
            const double difference = static_cast<double>(cell) - m_shift;
            sum += difference;
            squares += difference * difference;
        }
        m_count += static_cast<double>(cells.size());
        m_sum += sum;
        m_squares += squares;
    }

    std::array<double, 4> Result() const {
        const double mean = m_sum / m_count;
        const double variance = std::max(0.0, m_squares / m_count - mean * mean);
        return {static_cast<double>(m_minimum), static_cast<double>(m_maximum), m_shift + mean, std::sqrt(variance)};
    }

private:
    double m_count = 0.0;
    double m_shift = 0.0;
    double m_sum = 0.0;
    double m_squares = 0.0;
    float m_minimum = std::numeric_limits<float>::infinity();
    float m_maximum = -std::numeric_limits<float>::infinity();
};

class GridWriter final : public platform::IRasterWriter {
public:
    GridWriter(platform::IFileSystem& files, platform::IFolders& folders, std::filesystem::path folder,
               platform::RasterDefinition definition);
    ~GridWriter() override;
    GridWriter(const GridWriter&) = delete;
    GridWriter& operator=(const GridWriter&) = delete;

    void WriteRow(std::span<const float> cells) override;
    std::shared_ptr<platform::IRasterDataset> Publish() override;

private:
    bool IsWhole() const { return m_row == m_definition.Geometry.Rows; }
    std::int32_t TileRow() const { return (m_row - 1) / grid::kTileCells; }
    std::filesystem::path TileFile(std::int32_t tile, const char* ending) const;
    void KeepRow(std::span<const float> cells);
    void WriteBlockRow();
    void WriteTilePart(std::int32_t tile, std::span<const std::span<const float>> rows);
    std::unique_ptr<platform::IOutputFile> OpenTile(std::int32_t tile, bool anew);
    void FinishTileRow();
    void WriteWhole(const std::string& name, std::string_view bytes);
    void WriteDescription();

    platform::IFileSystem& m_files;
    platform::IFolders& m_folders;
    std::filesystem::path m_folder;
    platform::RasterDefinition m_definition;
    std::filesystem::path m_temporary;
    std::int32_t m_tiles;                                        // left to right
    std::vector<float> m_rows;                                   // up to four rows, waiting for their block row
    std::vector<std::unique_ptr<platform::IOutputFile>> m_open;  // data files of this row of tiles
    std::string m_bytes;                                         // one block row of one tile
    Tally m_tally;
    std::int32_t m_row = 0;  // rows taken
    bool m_broken = false;   // a write failed: the files have a hole
    bool m_published = false;
};

GridWriter::GridWriter(platform::IFileSystem& files, platform::IFolders& folders, std::filesystem::path folder,
                       platform::RasterDefinition definition)
    : m_files(files),
      m_folders(folders),
      m_folder(std::move(folder)),
      m_definition(std::move(definition)),
      m_temporary(m_folder / platform::TemporaryName(m_definition.Name)),
      m_tiles(grid::count_of(m_definition.Geometry.Columns, grid::kTileCells)) {
    const auto columns = static_cast<std::size_t>(m_definition.Geometry.Columns);
    m_rows.reserve(columns * static_cast<std::size_t>(std::min(grid::kBlockRows, m_definition.Geometry.Rows)));
    if (m_files.FolderExists(m_temporary)) m_folders.DeleteTree(m_temporary);
    naming_raster(m_definition.Name, [&] { m_folders.Create(m_temporary); });
}

GridWriter::~GridWriter() {
    if (m_published) return;
    m_open.clear();
    try {
        m_folders.DeleteTree(m_temporary);
    } catch (const platform::RuntimeError&) {
        // A temporary folder stays; its name tells what it is.
    }
}

void GridWriter::WriteRow(std::span<const float> cells) {
    if (IsWhole() || cells.size() != static_cast<std::size_t>(m_definition.Geometry.Columns))
        platform::Raise(error_number::kSubscript);
    platform::CheckCells(cells, m_definition.Name);
    if (m_broken) raise_unfinished(m_definition.Name);
    m_broken = true;
    naming_raster(m_definition.Name, [&] { KeepRow(cells); });
    m_broken = false;
}

void GridWriter::KeepRow(std::span<const float> cells) {
    m_tally.Add(cells);
    m_rows.insert(m_rows.end(), cells.begin(), cells.end());
    ++m_row;
    if (m_row % grid::kBlockRows == 0 || IsWhole()) WriteBlockRow();
    if (m_row % grid::kTileCells == 0 || IsWhole()) FinishTileRow();
}

void GridWriter::WriteBlockRow() {
    const auto columns = static_cast<std::size_t>(m_definition.Geometry.Columns);
    std::vector<std::span<const float>> rows;
    for (std::size_t first = 0; first < m_rows.size(); first += columns)
        rows.push_back(std::span<const float>(m_rows).subspan(first, columns));
    for (std::int32_t tile = 0; tile < m_tiles; ++tile) WriteTilePart(tile, rows);
    m_rows.clear();
}

void GridWriter::WriteTilePart(std::int32_t tile, std::span<const std::span<const float>> rows) {
    const auto columns = static_cast<std::size_t>(m_definition.Geometry.Columns);
    m_bytes.clear();
    for (std::int32_t block = 0; block < grid::kTileBlocks; ++block) {
        const auto first =
            static_cast<std::size_t>(std::int64_t{tile} * grid::kTileCells + std::int64_t{block} * grid::kBlockColumns);
        if (first < columns)
            grid::append_block(m_bytes, rows, first);
        else
            grid::append_u16(m_bytes, 0);
    }
    const bool anew = (m_row - 1) % grid::kTileCells < grid::kBlockRows;
    const bool keepOpen = static_cast<std::size_t>(m_tiles) <= kMostOpenFiles;
    if (!keepOpen) {
        const auto file = OpenTile(tile, anew);
        file->Write(m_bytes);
        return file->Close();
    }
    if (anew) m_open.push_back(OpenTile(tile, true));
    m_open[static_cast<std::size_t>(tile)]->Write(m_bytes);
}

std::unique_ptr<platform::IOutputFile> GridWriter::OpenTile(std::int32_t tile, bool anew) {
    auto file =
        m_files.OpenForWriting(TileFile(tile, ".adf"), anew ? platform::WriteMode::kNew : platform::WriteMode::kAppend);
    const auto& geometry = m_definition.Geometry;
    if (anew)
        file->Write(grid::file_head(grid::data_length(grid::cells_in_tile(geometry.Columns, tile),
                                                      grid::cells_in_tile(geometry.Rows, TileRow()))));
    return file;
}

void GridWriter::FinishTileRow() {
    for (const auto& file : m_open) file->Close();
    m_open.clear();
    const auto& geometry = m_definition.Geometry;
    for (std::int32_t tile = 0; tile < m_tiles; ++tile)
        WriteWhole(TileFile(tile, "x.adf").filename().string(),
                   grid::index_file(grid::cells_in_tile(geometry.Columns, tile),
                                    grid::cells_in_tile(geometry.Rows, TileRow())));
}

std::filesystem::path GridWriter::TileFile(std::int32_t tile, const char* ending) const {
    return m_temporary / (grid::tile_name(tile, TileRow()) + ending);
}

void GridWriter::WriteWhole(const std::string& name, std::string_view bytes) {
    const auto file = m_files.OpenForWriting(m_temporary / name, platform::WriteMode::kNew);
    file->Write(bytes);
    file->Close();
}

void GridWriter::WriteDescription() {
    WriteWhole("dblbnd.adf", grid::bounds_file(m_definition.Geometry));
    WriteWhole("sta.adf", grid::statistics_file(m_tally.Result()));
    const std::string projection = ProjectionFileText(m_definition.Reference);
    if (!projection.empty()) WriteWhole("prj.adf", projection + "\n");
    WriteWhole("hdr.adf", grid::header_file(m_definition.Geometry));
}

std::shared_ptr<platform::IRasterDataset> GridWriter::Publish() {
    if (!IsWhole() || m_broken || m_published) raise_unfinished(m_definition.Name);
    const auto place = m_folder / m_definition.Name;
    m_broken = true;
    naming_raster(m_definition.Name, [&] {
        WriteDescription();
        refuse_taken_raster(m_files, m_folder, m_definition);
        m_files.Rename(m_temporary, place);
    });
    m_broken = false;
    m_published = true;
    return OpenRaster(place);
}

}  // namespace

std::unique_ptr<platform::IRasterWriter> CreateGrid(platform::IFileSystem& files, platform::IFolders& folders,
                                                    const std::filesystem::path& folder,
                                                    const platform::RasterDefinition& definition) {
    check_new_raster(files, folder, definition);
    return std::make_unique<GridWriter>(files, folders, folder, definition);
}

}  // namespace wxl::files
