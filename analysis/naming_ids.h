#pragma once
#include "platform/values.h"

#include <span>
#include <string>
#include <vector>

namespace wxl::analysis {

/// One naming ID per animal: 1, 2, 3 ... for text IDs, the ID itself for numbers. Numbers that agree in 15 digits are
/// told apart by writing 17, so that no two animals share a name.
std::vector<std::string> naming_ids(std::span<const platform::FieldValue> ids, bool textIds);

}  // namespace wxl::analysis
