#pragma once
#include "adapters/tracking/target_projection.h"
#include "adapters/tracking/tracking_file.h"
#include "apps/cli/console.h"
#include "apps/cli/import_options.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace wxl::cli {

/// Fixes of tracking files in the coordinate system in which they are to be measured.
struct ImportedFixes {
    tracking::Tracking Data;  ///< positions of its fixes are in System
    tracking::NamedSystem System;
    std::optional<platform::Distortion> Wrong;  ///< nothing in degrees
    std::vector<std::string> Groups;            ///< names of what each animal's fixes are split into; empty: not split
    std::vector<std::uint32_t> GroupOf;         ///< of each fix, index into Groups
    std::vector<std::string> Individual;        ///< of each group
    std::vector<std::string> Key;               ///< of each group

    bool HasTimes() const;
};

/// Reads, filters, thins, splits and projects the fixes, and tells every choice. `rejected` is told of every row that
/// is left out. WrongCall for an option that means nothing; RuntimeError with advice for files that cannot be imported.
ImportedFixes import_fixes(const FixOptions& options, const tracking::RejectedRows::Listener& rejected,
                           Console& console);

}  // namespace wxl::cli
