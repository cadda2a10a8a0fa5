#pragma once
#include "analysis/record.h"

#include <string>

namespace wxl::analysis {

/// Whether a distribution was computed and its isopleths were not.
bool lacks_isopleths(const AnimalRecord& record);

/// Why, in one line, and what to do; "" where nothing is missing.
std::string isopleth_failure(const AnimalRecord& record, const Settings& settings);

}  // namespace wxl::analysis
