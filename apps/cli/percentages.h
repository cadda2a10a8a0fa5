#pragma once
#include <string>
#include <vector>

namespace wxl::cli {

/// Whether 100 % means something.
enum class Hundred { kAllowed, kRefused };

/// The percentages of a list "95,50", each above 0 and up to or below 100; WrongCall that names `option` for anything
/// else.
std::vector<double> percentages_of(const std::string& option, const std::string& text,
                                   Hundred hundred = Hundred::kAllowed);

}  // namespace wxl::cli
