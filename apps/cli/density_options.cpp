#include "apps/cli/density_options.h"

#include "apps/cli/option_checks.h"
#include "platform/checked.h"
#include "platform/text.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace wxl::cli {

namespace {

using comparison::BandwidthRule;
using comparison::DensityWishes;
using platform::IsNumeric;
using platform::NumberFromText;

constexpr int kMostParts = 1000;

bool is_positive(const std::string& text) {
    return IsNumeric(text) && NumberFromText(text) > 0.0;
}

double positive_number(const std::string& text, const char* what) {
    if (!is_positive(text)) throw WrongCall(fmt::format("--bandwidth: \"{}\" is not {}", text, what));
    return NumberFromText(text);
}

void take_parts(const std::string& text, DensityWishes& wishes) {
    const bool whole = is_positive(text) && NumberFromText(text) <= kMostParts &&
                       NumberFromText(text) == static_cast<int>(NumberFromText(text));
    if (!whole)
        throw WrongCall(fmt::format("--bandwidth: \"{}\" is not a number of parts from 1 to {}", text, kMostParts));
    wishes.AdHoc.Parts = static_cast<std::int32_t>(NumberFromText(text));
}

void take_rule(const std::string& text, DensityWishes& wishes) {
    if (text == "href") {
        wishes.Rule = BandwidthRule::kHref;
    } else if (text == "lscv") {
        wishes.Rule = BandwidthRule::kLscv;
    } else if (text == "bcv") {
        wishes.Rule = BandwidthRule::kBcv;
    } else if (text == "adhoc" || text.starts_with("adhoc:")) {
        wishes.Rule = BandwidthRule::kAdHoc;
        if (text.size() > 5) take_parts(text.substr(6), wishes);
    } else if (text.starts_with("prop:")) {
        wishes.Rule = BandwidthRule::kProportion;
        wishes.Value = positive_number(text.substr(5), "a proportion above 0");
    } else {
        wishes.Rule = BandwidthRule::kManual;
        wishes.Value =
            positive_number(text, "href, lscv, bcv, adhoc[:PARTS], prop:P, or a number of map units above 0");
    }
}

}  // namespace

void add_density_options(CLI::App& command, DensityOptions& options) {
    command
        .add_option("--bandwidth", options.Bandwidth,
                    "href, lscv, bcv, adhoc[:PARTS], one bandwidth in map units, or a proportion of HREF (prop:0.8)")
        ->transform(any_case({"href", "lscv", "bcv", "adhoc", "prop"}))
        ->type_name("METHOD")
        ->capture_default_str();
    command.add_flag("--adaptive", options.Adaptive, "Adaptive kernel instead of a fixed one");
    command.add_flag("--rescale", options.Rescale, "Rescale the coordinates to unit variance");
    command
        .add_option("--cell-size", options.CellSize,
                    "Cell size in map units, used as a whole number; without it about a fifth of the bandwidth")
        ->type_name("C");
}

DensityWishes density_wishes(const DensityOptions& options) {
    DensityWishes wishes;
    take_rule(options.Bandwidth, wishes);
    wishes.Adaptive = options.Adaptive;
    wishes.Rescale = options.Rescale;
    wishes.AdHoc.CellSize = cell_size_of(options.CellSize);
    if (wishes.Rule == BandwidthRule::kAdHoc && (wishes.Adaptive || wishes.Rescale))
        throw WrongCall(
            "--bandwidth adhoc is for fixed kernels of coordinates as they are: leave out --adaptive and "
            "--rescale");
    return wishes;
}

double cell_size_of(const std::string& text) {
    if (text.empty()) return 0.0;
    const double size = IsNumeric(text) ? NumberFromText(text) : 0.0;
    if (!(size > 0.5 && size < 1e9))
        throw WrongCall(fmt::format(
            "--cell-size: \"{}\" is not a number above 0.5; it is used as a whole number of map units", text));
    return platform::round_half_even(size, 0);
}

}  // namespace wxl::cli
