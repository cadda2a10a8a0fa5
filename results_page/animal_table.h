#pragma once
#include "results_page/page_run.h"

#include <string>

namespace wxl::results_page {

/// The table of all distributions as HTML, in a region of its own that scrolls sideways. Its head holds buttons by
/// which the page's script sorts the rows.
std::string animal_table(const PageRun& run);

/// The percentages of the run without repetitions, from the largest.
std::vector<double> falling_percentages(const PageRun& run);

/// The record's area at a percentage; absent where it has none.
std::optional<double> area_at(const analysis::AnimalRecord& record, double percent);

}  // namespace wxl::results_page
