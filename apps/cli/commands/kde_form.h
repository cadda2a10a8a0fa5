#pragma once
#include "adapters/ogr/files_map.h"
#include "analysis/settings_text.h"
#include "apps/cli/commands/kde.h"
#include "kde_tool/frmKDE.h"

#include <optional>

namespace wxl::cli {

/// What the options say of a run, each text read once; nothing where an option was not given.
struct GivenSettings {
    std::optional<analysis::BandwidthChoice> Bandwidth;
    std::optional<analysis::ExtentChoice> Extent;
    std::optional<analysis::TypedNumbers> Percentages;
    analysis::TypedNumbers ConvexPercentages;  ///< empty: none are wanted
    std::optional<analysis::CellSize> Cells;
    std::optional<analysis::TypedNumber> ScalingFactor;
    analysis::Reach KernelReach;
};

/// Reads the options. WrongCall for those that make no sense by themselves, before anything is opened.
GivenSettings given_settings(const KdeOptions& options);

/// Fills the form as a user does: layer and ID field, settings file, options, then the pages with the statistics, so
/// that the largest reference bandwidth is known and a buffer is suggested where none was given. WrongCall where the
/// options and the input do not go together.
void fill_form(const KdeOptions& options, const GivenSettings& given, files::FilesFeatureLayer& layer,
               kde_tool::frmKDE& form);

}  // namespace wxl::cli
