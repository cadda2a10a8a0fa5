#pragma once
// The parts of the page around the distributions, as HTML.

#include "results_page/page_run.h"

#include <string>

namespace wxl::results_page {

/// From the document type to the opening of the main part: head with style, skip link, title, navigation.
std::string page_opening(const PageRun& run);

/// What went wrong, in one paragraph; "" when nothing did.
std::string problems(const PageRun& run);

/// How to read the numbers.
std::string reading_notes(const PageRun& run);

std::string settings_section(const PageRun& run);

/// @param command the call that makes the run again
std::string repeat_section(const PageRun& run, const std::string& command);

/// What a publication says of the run in its methods, as text to copy, and the works that it cites.
std::string methods_section(const PageRun& run);

/// Version, times, the script, the end of the document.
std::string page_closing(const PageRun& run);

}  // namespace wxl::results_page
