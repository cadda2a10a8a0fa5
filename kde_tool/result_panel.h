#pragma once
#include "platform/values.h"

#include <filesystem>
#include <string>
#include <vector>

namespace wxl::kde_tool {

/// What the panel below the pages tells, of the last run above all; without a headline it is not there.
struct ResultPanel {
    enum class Look { kNote, kDone, kPartly, kFailure };

    Look Kind = Look::kNote;
    std::string Headline = {};
    std::vector<std::string> Lines = {};        ///< what failed, why, and what to do: an animal each; then remarks
    std::filesystem::path Folder = {};          ///< of the results; empty: there are none
    std::filesystem::path Page = {};            ///< the HTML page; empty: there is none
    platform::Extent Extent = {};               ///< of all rasters; empty where none was written
    platform::SpatialReference Reference = {};  ///< of the extent
};

}  // namespace wxl::kde_tool
