#pragma once
#include "adapters/tracking/tracking_file.h"
#include "platform/values.h"

#include <cstdint>
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

/// What tracking files are to be read for. WrongCall for a time zone that there is not.
tracking::ReadOptions read_options(const FixOptions& options);

/// The coordinate system that `option` names by `text`, whose code may exist in form only. WrongCall where there is no
/// such system, or where its x and y are no places on a map.
platform::SpatialReference reference_of(const std::string& text, const std::string& option);

/// The seconds of the duration `text` of `option`. WrongCall where it is none.
std::int64_t duration_of(const std::string& text, const std::string& option);

}  // namespace wxl::cli
