#pragma once
#include "adapters/tracking/tracking_file.h"

namespace wxl::tracking {

/// The rows of one file, read once for the fixes and again, row by row, for the other columns.
class FileRows {
public:
    FileRows(std::unique_ptr<std::istream> source, const std::string& name, std::size_t index, Tracking& owner,
             const std::optional<Dialect>& dialect);

    /// Reads all rows into the owner's fixes.
    void ReadAll(const std::string& animal, const std::function<void(std::uint64_t)>& progress);

    /// Brings the reader to the row of a fix and gives the trimmed cell of one of the owner's other columns.
    void SeekTo(const TrackingFix& fix);
    std::string_view Other(std::size_t other) const;
    std::string_view Time() { return TimeCell(); }  ///< of the row that SeekTo found

    void SetOwner(Tracking& owner) { m_owner = &owner; }
    FileFacts& Facts() { return m_owner->Files[m_index]; }
    const FileFacts& Facts() const { return m_owner->Files[m_index]; }

private:
    struct DataStart {
        std::uint64_t Offset = 0;
        std::int64_t Line = 1;
    };

    void ReserveFixes();
    void ReadHeader();
    void NameColumns();
    void TakeSample();
    void CheckRowNames() const;
    void FindColumns();
    void TellColumns();
    void FindSystem();
    void FindOthers();
    void DecideTimes();
    TimeKind KindOfNumbers();
    void RefuseRounded(const ColumnProfile& profile) const;
    [[noreturn]] void RefuseNumbers();
    void TellNumbers(std::size_t firstFix);
    void DecideOrder();
    bool SampleNeedsOrder();

    bool NextRow();
    bool IsBlankRow() const;
    void TakeRow();
    bool CellsFit();
    std::optional<Reason> WhyNoFix();
    bool TakePosition(TrackingFix& fix);
    bool TakePair(TrackingFix& fix);
    bool TakeCoordinate(std::size_t column, bool isX, double& value);
    bool TakeParts(const DegreeParts& parts, double& degrees);
    bool LeaveCoordinate(std::size_t column);
    bool TakeTime(TrackingFix& fix);
    bool TakeAnimal(TrackingFix& fix);
    bool PassesFilters();
    bool SaysNoFix() const;
    void TakeOthers();
    void SettlePositions(std::size_t firstFix);
    bool MayBeParts() const;
    void SettleDegrees(std::size_t firstFix);
    void ProjectZones(std::size_t firstFix);

    std::string_view Cell(std::size_t column) const;
    std::string_view TimeCell();
    std::string Place() const;
    void Leave(Reason why, std::optional<std::size_t> column);
    void LeaveUnreadable(Reason why, std::optional<std::size_t> column, const std::string& what);
    [[noreturn]] void Refuse(const std::string& what) const;

    std::unique_ptr<std::istream> m_source;
    CsvReader m_reader;
    std::size_t m_index;
    Tracking* m_owner;
    const ReadOptions* m_options = nullptr;
    std::vector<std::string> m_header;
    std::vector<ColumnProfile> m_profiles;
    std::size_t m_lastRole = 0;  ///< last column that must be there
    Layout m_layout;
    TimeFormat m_format;
    bool m_hasRowNames = false;  ///< a first column without a heading
    std::size_t m_decimals = 0;  ///< most of a day number that is no whole minute
    PositionUnit m_unit = PositionUnit::kUnknown;
    DataStart m_dataStart;
    std::int64_t m_headerLine = 1;
    std::uint64_t m_sampleEnd = 0;                              ///< start of the last row of the sample
    std::size_t m_sampleRows = 0;                               ///< before that row
    std::vector<std::optional<std::size_t>> m_columnOf;         ///< of the owner's other columns, in this file
    std::vector<std::pair<std::size_t, std::size_t>> m_others;  ///< this file's column, the owner's
    std::string m_joined;
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
