#pragma once
#include "results_page/page_run.h"

#include <string>
#include <vector>

namespace wxl::results_page {

/// The words of the `wxl kde` call that makes the run again. Where the point layer lies in no file that is known, its
/// name stands for it; features that were selected by hand have no words.
std::vector<std::string> repeat_words(const PageRun& run);

/// The words as a shell reads them: quoted where needed.
std::string shell_text(const std::vector<std::string>& words);

}  // namespace wxl::results_page
