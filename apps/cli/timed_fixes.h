#pragma once
#include "apps/cli/input_layer.h"
#include "platform/values.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace wxl::cli {

/// Where animals and times of a layer stand.
struct TimedInputOptions {
    InputOptions Points;
    std::string IdField;
    std::string TimeField;  ///< one field, or "DATE,TIME" for two of one moment
};

/// Gives `command` INPUT, --id-field and --time-field.
void add_timed_input_options(CLI::App& command, TimedInputOptions& options);

/// A moment: whole seconds, and what is beyond them, so that fast clocks keep their digits.
struct Moment {
    std::int64_t Seconds = 0;  ///< since 1970-01-01 UTC, or whatever a field of numbers counts from
    double Fraction = 0.0;     ///< 0 to below 1
};

/// One animal's fixes that have a place and a time, in the layer's order.
struct TimedAnimal {
    platform::FieldValue Id;
    std::string NamingId;  ///< stands in names of files
    std::vector<platform::Point> Fixes;
    std::vector<Moment> Times;    ///< one for each fix
    std::size_t WithoutTime = 0;  ///< fixes left out: their time is missing or none
    std::string FirstUnreadable;  ///< the first text that is no time; "" where there is none

    std::vector<double> Seconds() const;  ///< from the earliest fix
};

struct TimedAnimals {
    std::vector<TimedAnimal> Animals;  ///< ascending by ID
    platform::SpatialReference Reference;
    ReadFiles Read;            ///< the files of the layer
    bool NumberTimes = false;  ///< times are numbers of a field, not moments of a calendar
};

/// Reads the layer. RuntimeError as open_measured_point_layer, and 9 for a field that is not there.
TimedAnimals read_timed_animals(const TimedInputOptions& options, Console& console);

/// The moment of a cell: a number is seconds, a text a timestamp with what fraction of a second it has. Nothing for a
/// missing cell or a text that is none.
std::optional<Moment> moment_of(const platform::FieldValue& cell);

/// "2018-05-09T14:59:05Z", whole seconds; a number where times are numbers.
std::string moment_text(const Moment& moment, bool number);

}  // namespace wxl::cli
