#pragma once
#include "comparison/index_table.h"
#include "results_page/page_run.h"

#include <string>
#include <utility>
#include <vector>

namespace wxl::results_page {

/// A comparison of ranges as its files and its page tell of it. What is pointed to outlives it.
struct OverlapRun {
    const comparison::ComparedRanges* Ranges = nullptr;
    std::vector<const comparison::IndexKind*> Indices;  ///< the first is that of map and largest pairs
    PageRun Units;                                      ///< the coordinate system, in which lengths and areas are told
    std::string Title;                                  ///< of the layer or folder that was compared
    std::vector<std::pair<std::string, std::string>> Settings;  ///< names and values as the page lists them
    std::vector<std::string> Words;                             ///< the call that makes it again
    std::vector<std::string> Warnings;
    platform::DateTime Start;
    platform::DateTime Finish;
};

}  // namespace wxl::results_page
