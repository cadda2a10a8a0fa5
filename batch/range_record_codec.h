#pragma once
#include "akde/range_record.h"
#include "batch/json_codec.h"

#include <cstddef>
#include <string>
#include <vector>

namespace wxl::batch {

/// A record that comes back equal in every member, numbers to the last bit.
Json json_of_record(const akde::RangeRecord& record);
akde::RangeRecord range_record_of(const Json& json);

/// What a run said of an animal.
struct ToldLine {
    bool Problem = false;  ///< the user has to see it
    std::string Text;
    friend bool operator==(const ToldLine&, const ToldLine&) = default;
};

/// One animal as a task leaves it: what a single run would have told at this place.
struct RangeEntry {
    std::size_t Animal = 0;  ///< place in the run's order
    akde::RangeRecord Record;
    std::vector<ToldLine> Lines;
    friend bool operator==(const RangeEntry&, const RangeEntry&) = default;
};

Json json_of_entry(const RangeEntry& entry);
RangeEntry range_entry_of(const Json& json);

}  // namespace wxl::batch
