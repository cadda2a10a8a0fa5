#pragma once
#include "adapters/tracking/position_cells.h"
#include "adapters/tracking/table_rows.h"
#include "adapters/tracking/time_cells.h"
#include "adapters/tracking/tracking_file.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <istream>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace wxl::tracking {

/// The rows of one file, read once for the fixes and again, row by row, for the other columns.
class FileRows {
public:
    FileRows(std::unique_ptr<std::istream> source, const std::string& name, std::size_t index, Tracking& owner,
             const std::optional<Dialect>& dialect);
    FileRows(const FileRows&) = delete;
    FileRows& operator=(const FileRows&) = delete;

    /// Reads all rows into the owner's fixes.
    void ReadAll(const std::string& animal, const std::function<void(std::uint64_t)>& progress);

    /// Brings the reader to the row of a fix and gives the trimmed cell of one of the owner's other columns.
    void SeekTo(const TrackingFix& fix);
    std::string_view Other(std::size_t other) const;
    std::string_view Time() { return m_times->Text(); }  ///< of the row that SeekTo found

    void SetOwner(Tracking& owner) { m_owner = &owner; }
    FileFacts& Facts() { return m_owner->Files[m_index]; }
    const FileFacts& Facts() const { return m_owner->Files[m_index]; }

private:
    void FindColumns();
    void TellColumns();
    void FindSystem();
    void FindOthers();
    void DecideTimes();

    void TakeRow();
    std::optional<RowFault> Take(TrackingFix& fix);
    bool CellsFit() const;
    std::optional<RowFault> WhyNoFix() const;
    void TakeAnimal(TrackingFix& fix);
    std::optional<RowFault> WhyFiltered();
    void Leave(const RowFault& fault);
    void TakeOthers();
    void SettlePositions(std::size_t firstFix);
    bool MayBeParts() const;
    void SettleDegrees(std::size_t firstFix);
    void ProjectZones(std::size_t firstFix);

    TableRows m_table;
    std::size_t m_index;
    Tracking* m_owner;
    const ReadOptions* m_options = nullptr;
    std::size_t m_lastRole = 0;  ///< last column that must be there
    Layout m_layout;
    std::optional<PositionCells> m_positions;
    std::optional<TimeCells> m_times;  ///< nothing: the table has none
    PositionUnit m_unit = PositionUnit::kUnknown;
    std::vector<std::optional<std::size_t>> m_columnOf;         ///< of the owner's other columns, in this file
    std::vector<std::pair<std::size_t, std::size_t>> m_others;  ///< this file's column, the owner's
    std::string m_firstTrouble;  ///< first row that could not be read: place, what is wrong and what to do
    std::string m_lastCell;
    std::uint32_t m_lastAnimal = 0;
    bool m_hasLastAnimal = false;
    std::vector<std::string> m_zones;
    std::vector<std::uint8_t> m_zoneOf;
    std::int64_t m_rows = 0;
    std::int64_t m_unreadable = 0;
};

}  // namespace wxl::tracking
