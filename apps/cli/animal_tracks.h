#pragma once
#include "apps/cli/input_layer.h"
#include "apps/cli/json_values.h"
#include "tracking_times/time_facts.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace wxl::cli {

/// Whose fixes a command compares, and which of them.
struct AnimalFixOptions {
    InputOptions Points;
    std::string IdField;
    std::string Where;
    std::string Time;
    std::string Every;
    std::string EveryTolerance;
    std::string SplitBy;
    double UtcOffset = 0.0;  ///< hours
    std::string Hemisphere = "north";
};

/// Gives `command` INPUT, --id-field, --where, and what chooses fixes by their time.
/// @param idRequired whether --id-field must be given
void add_fix_options(CLI::App& command, AnimalFixOptions& options, bool idRequired = true);

/// The fixes of one animal, or of one group of them, in the order of time where that was read (those without a time
/// last), otherwise in the layer's order.
struct AnimalTrack {
    platform::FieldValue Id;
    std::string Key;  ///< of the group; empty without --split-by
    std::vector<platform::Point> Fixes;
    std::size_t Timed = 0;                 ///< how many of the first fixes have a time
    tracking_times::TimeFacts Times = {};  ///< where times were read

    std::string Name() const;  ///< "ID" or "ID KEY"
    Json IdJson() const;       ///< the ID as it is, or the name of the group
};

struct AnimalTracks {
    std::vector<AnimalTrack> Animals;
    platform::SpatialReference Reference;
    std::string TimeField;  ///< empty: no times were read
    ReadFiles Read = {};    ///< the files of the layer
};

/// Whether a command has use for times.
enum class Times {
    kNone,      ///< only where fixes are chosen by them
    kWanted,    ///< where the layer has any
    kRequired,  ///< RuntimeError 9 where it has none
};

/// Reads the layer, leaves out and tells what has no ID, place, or key, thins, and splits.
/// WrongCall for options that make no sense; RuntimeError with advice as open_measured_point_layer, 9 for a field that
/// is not there, 5 when no fix is left.
AnimalTracks read_tracks(const AnimalFixOptions& options, Times times, Console& console);

/// Adds the facts on the times of one of the animals to its object, where times were read.
void add_times(Json& json, const AnimalTracks& tracks, const AnimalTrack& track);

/// Name of a field that looks like the time of the fix: Time2 of wxl import, timestamp and the like; empty: none.
std::string guess_time_field(platform::ITable& table);

/// Facts on the times of every animal's fixes that have a place, ascending by ID. Cells are whole seconds since
/// 1970-01-01 UTC or texts of a time; anything else counts as none. RuntimeError 9 for a field that is not there.
std::vector<tracking_times::TimeFacts> time_facts_of(files::FilesFeatureLayer& layer, const std::string& idField,
                                                     const std::string& timeField);

/// "first", "last" (ISO 8601, UTC), "days", "distinct_days", "median_s", "q1_s", "q3_s", "iqr_s" and "equal_times";
/// null where there are too few times.
Json json_of(const tracking_times::TimeFacts& facts);

}  // namespace wxl::cli
