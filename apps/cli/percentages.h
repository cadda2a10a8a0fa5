#pragma once
#include <string>
#include <vector>

namespace wxl::cli {

/// The percentages of a list "95,50", each above 0 and up to 100; WrongCall that names `option` for anything else.
std::vector<double> percentages_of(const std::string& option, const std::string& text);

}  // namespace wxl::cli
