#pragma once
// Animals of a point layer with the times of their fixes.

#include "platform/map.h"
#include "platform/values.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace wxl::akde {

/// A moment: whole seconds, and what is beyond them, so that fast clocks keep their digits.
struct Moment {
    std::int64_t Seconds = 0;  ///< since 1970-01-01 UTC, or whatever a field of numbers counts from
    double Fraction = 0.0;     ///< 0 to below 1
    friend bool operator==(const Moment&, const Moment&) = default;
};

/// The moment of a cell: a number is seconds, a text a timestamp with what fraction of a second it has. Nothing for a
/// missing cell or a text that is none.
std::optional<Moment> moment_of(const platform::FieldValue& cell);

/// "2018-05-09T14:59:05Z", whole seconds; a number where times are numbers.
std::string moment_text(const Moment& moment, bool number);

/// One animal's fixes that have a place and a time, in the layer's order.
struct TimedAnimal {
    platform::FieldValue Id;
    std::string NamingId;  ///< stands in names of files
    std::vector<platform::Point> Fixes;
    std::vector<Moment> Times;    ///< one for each fix
    std::size_t WithoutTime = 0;  ///< fixes left out: their time is missing or none
    std::string FirstUnreadable;  ///< the first text that is no time; "" where there is none
    std::string Subfolder = {};   ///< of the output folder, takes the animal's files; empty: the folder itself

    std::vector<double> Seconds() const;  ///< from the earliest fix
    friend bool operator==(const TimedAnimal&, const TimedAnimal&) = default;
};

struct TimedAnimals {
    std::vector<TimedAnimal> Animals;  ///< ascending by ID
    platform::SpatialReference Reference;
    std::int64_t WithoutId = 0;  ///< points without a value in the ID field; they belong to no animal
    bool NumberTimes = false;    ///< times are numbers of a field, not moments of a calendar
    friend bool operator==(const TimedAnimals&, const TimedAnimals&) = default;
};

/// Gives every animal its sub-folder: one for every `every` animals; none with 0.
void spread_over_subfolders(TimedAnimals& animals, std::size_t every);

/// The distinct sub-folders of the animals, in their order; empty when there are none.
std::vector<std::string> subfolders_of(const TimedAnimals& animals);

/// Where animals and times stand in a layer.
struct TimedFields {
    std::string Id;
    std::string Time;  ///< one field (a text, a date or seconds), or "DATE,TIME" for two of one moment
    friend bool operator==(const TimedFields&, const TimedFields&) = default;
};

/// Reads the fixes of a layer, or only its selected ones. RuntimeError 9 for a field that `source` (as the user calls
/// the layer) has not, with the fields that it has; 91 when the layer has no feature class.
TimedAnimals read_timed_animals(platform::IFeatureLayer& layer, const TimedFields& fields, bool selectedOnly,
                                const std::string& source);

}  // namespace wxl::akde
