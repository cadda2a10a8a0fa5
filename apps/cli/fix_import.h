#pragma once
#include "adapters/tracking/target_projection.h"
#include "adapters/tracking/tracking_file.h"
#include "apps/cli/console.h"
#include "tracking_times/split_keys.h"
#include "tracking_times/thinning.h"

#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace wxl::cli {

/// What is read of tracking files, as the options of a command say it.
struct FixOptions {
    std::vector<std::string> Inputs;
    bool AllowIndirect = false;  ///< files may be pipes
    std::string Id;              ///< column names; empty: found
    std::string X;
    std::string Y;
    std::string Time;
    std::string Animal;
    bool NoTime = false;
    std::string DateOrder;  ///< empty: decided by the column
    std::string TimeZone;
    std::string FromCrs;  ///< empty: degrees, or what the layer says
    std::string ToCrs = "auto";
    std::string ArgosClasses;
    std::optional<double> MaxDop;
    std::string Every;
    std::string EveryTolerance;
    std::string SplitBy;
    friend bool operator==(const FixOptions&, const FixOptions&) = default;
};

/// The options as words of a command, but for the inputs.
std::vector<std::string> words_of(const FixOptions& options);

/// Adds these options but for the inputs.
void add_fix_options(CLI::App& command, FixOptions& options);

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
