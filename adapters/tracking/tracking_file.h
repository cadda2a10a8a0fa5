#pragma once
#include "adapters/tracking/column_roles.h"
#include "adapters/tracking/csv_reader.h"
#include "adapters/tracking/other_columns.h"
#include "adapters/tracking/rejected_rows.h"
#include "adapters/tracking/time_text.h"
#include "adapters/tracking/time_zone.h"

#include <cstdint>
#include <functional>
#include <istream>
#include <limits>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

namespace wxl::tracking {

/// What is to be read of tracking files, and how.
struct ReadOptions {
    WantedColumns Columns;
    std::string Animal;              ///< name of the one animal; empty: the files' columns, else the files' names
    std::optional<DateOrder> Order;  ///< nothing: decided by the whole column
    std::shared_ptr<TimeZone> Zone;  ///< of times that do not say it; null: UTC
    PositionUnit Unit = PositionUnit::kUnknown;  ///< of positions; kUnknown: degrees where they look like degrees
    std::optional<double> MaxDop;                ///< fixes above it are left out
    std::set<std::string> ArgosClasses;          ///< capital letters; empty: all
};

/// One fix of a tracking file, in the file's coordinates.
struct TrackingFix {
    static constexpr std::int64_t kNoTime = std::numeric_limits<std::int64_t>::min();

    double X = 0.0;
    double Y = 0.0;
    std::int64_t Seconds = kNoTime;  ///< since 1970-01-01 UTC
    std::uint64_t Place = 0;         ///< file and byte of its row, for ReadRow
    std::uint32_t Animal = 0;        ///< index into Tracking::Animals
    std::uint32_t Line = 0;          ///< of the file, for messages

    bool HasTime() const { return Seconds != kNoTime; }
    std::size_t File() const { return static_cast<std::size_t>(Place >> 48U); }
    std::uint64_t Offset() const { return Place & 0xFFFFFFFFFFFFULL; }
};

/// A column that is kept beside animal, position and time.
struct OtherColumn {
    std::string Name;
    ColumnType Type;
};

/// What was found of one file.
struct FileFacts {
    std::string Name;
    std::string Id;  ///< names of columns as they stand in the file; empty: none
    std::string X;
    std::string Y;
    std::vector<std::string> Time;
    std::string OtherId;      ///< may tell animals of the same name apart
    std::string Zone;         ///< UTM zones
    std::string UnusedClock;  ///< a column named like a time of day that could not be read as one
    std::string ZoneOfClock;  ///< a column that names zones of clocks, which the times do not heed
    bool IdByContent = false;
    bool PositionByContent = false;
    double PerDegree = 1.0;       ///< positions are whole numbers of such parts of a degree
    bool PartsByContent = false;  ///< PerDegree is told by the size of the numbers, not by the name
    std::string MinutesOfX;       ///< column of minutes beside degrees; empty: none
    std::string MinutesOfY;
    std::optional<int> Srid;    ///< EPSG code that each position names
    bool IsOfReceiver = false;  ///< positions are degrees and minutes in one number
    bool TimeByContent = false;
    bool NamedLengths = false;  ///< the names of the position say that it is in lengths
    bool TimeIsLocal = false;   ///< by the column's name
    bool TimeIsUtc = false;     ///< by the column's name, although a zone was given
    bool HeaderMissing = false;
    bool IsLengths = false;                  ///< positions are no degrees
    std::int64_t Over180 = 0;                ///< longitudes from 180 to 360, which became -180 to 0
    bool MadeNegative = false;               ///< positive longitudes west or latitudes south, by the column's name
    std::optional<DateOrder> Order;          ///< decided by the column
    TimeKind Numbers = TimeKind::kCalendar;  ///< what the numbers of the time were taken for; kCalendar: no numbers
    std::optional<std::int64_t> FirstTime;   ///< of fixes whose times are numbers, seconds since 1970 UTC
    std::optional<std::int64_t> LastTime;
    std::size_t DecimalsOfDays = 0;  ///< of day numbers that have too few for seconds; 0: enough
    std::int64_t Rows = 0;
    std::int64_t WithoutTime = 0;  ///< fixes kept though their time is missing
    std::int64_t Midnights = 0;    ///< times at midnight of their clock: dates alone, most often
    std::int64_t ClockTwice = 0;   ///< times that the clock showed twice
    std::int64_t ClockNever = 0;
    std::int64_t WithoutDop = 0;  ///< fixes kept though nothing tells their DOP
};

class FileRows;

/// The fixes of one or several tracking files.
class Tracking {
public:
    explicit Tracking(ReadOptions options);
    ~Tracking();
    Tracking(Tracking&&) noexcept;
    Tracking& operator=(Tracking&&) = delete;

    /// Reads a file: a header row, then one row per fix. Memory: 40 bytes per fix. `source` must be able to seek, and
    /// stays open. `animal` names the animal where no column does. A row that is no fix is left out (Rejected).
    /// RuntimeError 13 that names the file, the line and what to do: no table, no such column, dates whose order
    /// nothing decides, a fifth of the rows unreadable, no fix left. `progress` is told the bytes read so far now and
    /// then. `dialect`: where it is known.
    void Add(std::unique_ptr<std::istream> source, const std::string& name, const std::string& animal,
             const std::function<void(std::uint64_t)>& progress = {}, const std::optional<Dialect>& dialect = {});

    /// Columns of the files that are added from now on.
    void SetWanted(const WantedColumns& wanted) { m_options.Columns = wanted; }

    /// Brings the fixes in order: by animal, then by time (those without time last), then by file and line. Animals
    /// ascend by their bytes.
    void Sort();

    /// The cells of the other columns of a fix, in the order of Others. Fast where fixes follow one another in their
    /// file.
    void ReadRow(const TrackingFix& fix, std::vector<platform::FieldValue>& values);

    /// The cell of one of the other columns of a fix.
    std::string ReadCell(const TrackingFix& fix, std::size_t other);

    /// The time of a fix as it stands in its file.
    std::string ReadTime(const TrackingFix& fix);

    /// A fix as messages name it: "f.csv, line 7".
    std::string PlaceOf(const TrackingFix& fix) const;

    /// Leaves out a fix that was read, when all are known: `value` is told.
    void Reject(const TrackingFix& fix, Reason why, const std::string& column, const std::string& value);

    std::vector<std::string> Animals;  ///< UTF-8
    std::vector<TrackingFix> Fixes;
    std::vector<OtherColumn> Others;  ///< of all files
    std::vector<FileFacts> Files;
    RejectedRows Rejected;
    std::int64_t Rows = 0;  ///< read, left out ones too

private:
    friend class FileRows;
    std::uint32_t AnimalIndex(const std::string& name);
    std::size_t OtherIndex(const std::string& name);

    ReadOptions m_options;
    std::vector<std::unique_ptr<FileRows>> m_files;
    std::unordered_map<std::string, std::uint32_t> m_indexOf;
};

}  // namespace wxl::tracking
