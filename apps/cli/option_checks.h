#pragma once
// Checks of option values whose refusals are sentences, and which never ask the locale.

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace wxl::cli {

/// For transform(): takes one of `names` in any case and makes it the name as it stands there; refuses anything else.
CLI::Validator one_of(std::vector<std::string> names);

/// For transform(): makes a keyword of any case, before a colon or alone, the one of `keywords` as it stands there, and
/// leaves anything else as it is. What follows the colon (a number, a path) is never touched.
CLI::Validator any_case(std::vector<std::string> keywords);

/// For check(): a whole number from 1 to 999999999.
CLI::Validator whole_number_above_zero();

/// For check(): a whole number from `low` to `high`, neither below 0.
CLI::Validator whole_number_between(int low, int high);

/// For check(): a number from `low` to `high`.
CLI::Validator number_between(double low, double high);

/// WrongCall for a file or folder that was given as an empty text: an argument, or an option whose value is named DIR,
/// FILE or OUT.
void refuse_empty_paths(const CLI::App& program);

}  // namespace wxl::cli
