#pragma once
#include "adapters/files/csv_reader.h"

#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <vector>

namespace wxl::files {

/// Columns to read by name, found without regard to case. An empty name: the column is found by the names that people
/// and data bases give it ("individual-local-identifier", "organismID", "timestamp", "location-long", "x", ...).
struct TrackingColumns {
    std::string Id;
    std::string X;
    std::string Y;
    std::string Time;
};

/// One fix of a tracking file, in the file's coordinates.
struct TrackingFix {
    static constexpr std::int64_t kNoTime = std::numeric_limits<std::int64_t>::min();

    double X = 0.0;
    double Y = 0.0;
    std::int64_t Seconds = kNoTime;  ///< since 1970-01-01 UTC
    std::uint32_t Animal = 0;        ///< index into Tracking::Animals
    std::uint32_t Line = 0;          ///< of the file, for messages

    bool HasTime() const { return Seconds != kNoTime; }
};

/// Rows that are no fix of an animal, each counted once, by the first reason in this order.
struct LeftOutRows {
    std::int64_t NotVisible = 0;       ///< "visible" is false
    std::int64_t Outliers = 0;         ///< marked as outlier at import, by hand or by an algorithm
    std::int64_t WithoutPosition = 0;  ///< x or y is empty, "NA", "NaN" or "null"
    std::int64_t WithoutAnimal = 0;    ///< the animal's cell is empty or "NA"
};

/// The fixes of a tracking file.
struct Tracking {
    TrackingColumns Columns;           ///< names of the columns read, as they stand in the file; no time: empty
    std::vector<std::string> Animals;  ///< UTF-8, ascending by their bytes
    std::vector<TrackingFix> Fixes;    ///< by animal, then by time (those without time last), then by line
    std::string TimeOfDay;             ///< the column that dates were joined with; empty: none
    std::string OtherId;  ///< a column that may tell animals of the same name apart; empty: none, or the user chose
    LeftOutRows LeftOut;
    std::int64_t WithoutTime = 0;  ///< fixes kept though their time is empty
};

/// Reads a tracking file: a header row, then one row per fix. Memory: 32 bytes per fix.
///
/// Cells that are no UTF-8 are taken for Windows-1252. Times: see seconds_from_timestamp; a date cell without a time of
/// day is joined with a time column beside it. Where the separator is no comma, a coordinate may have a decimal comma.
/// RuntimeError 13 that names the file, the line and what to do: no header, no such column, a row with another number
/// of cells than the header, a position or time that cannot be read, an animal's name of more than 254 bytes, no fix
/// left. `progress` is told the bytes read so far now and then.
Tracking read_tracking(CsvReader& reader, const TrackingColumns& wanted,
                       const std::function<void(std::uint64_t)>& progress = {});

}  // namespace wxl::files
