#pragma once
#include "analysis/record.h"
#include "analysis/report_lines.h"
#include "batch/json_codec.h"
#include "platform/messages.h"

#include <vector>

namespace wxl::batch {

/// A record that comes back equal in every member, numbers to the last bit.
Json json_of_record(const analysis::AnimalRecord& record);
analysis::AnimalRecord record_of(const Json& json);

/// Facts on times that come back equal.
Json json_of_times(const tracking_times::TimeFacts& facts);
Json json_of_error(const std::optional<analysis::PositionError>& error);
std::optional<analysis::PositionError> error_of(const Json& json);
tracking_times::TimeFacts times_of(const Json& json);

/// One distribution as a task leaves it: what a single run would have written, shown and told at this place.
struct TaskEntry {
    std::size_t Distribution = 0;  ///< animal x values per animal + value, in the run's order
    analysis::AnimalRecord Record;
    analysis::Lines Report;
    std::vector<platform::MessageBox> Messages;
};

Json json_of_entry(const TaskEntry& entry);
TaskEntry entry_of(const Json& json);

/// Names of the methods in plans and results.
const char* method_text(analysis::BandwidthMethod method);
analysis::BandwidthMethod method_of_text(const std::string& text);

}  // namespace wxl::batch
