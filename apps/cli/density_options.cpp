#include "apps/cli/density_options.h"

#include "analysis/settings_text.h"
#include "apps/cli/option_checks.h"
#include "platform/checked.h"
#include "platform/text.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace wxl::cli {

namespace {

using comparison::BandwidthRule;
using comparison::DensitySettings;
using platform::IsNumeric;
using platform::NumberFromText;

bool is_positive(const std::string& text) {
    return IsNumeric(text) && NumberFromText(text) > 0.0;
}

double positive_number(const std::string& text, const char* what) {
    if (!is_positive(text)) throw WrongCall(fmt::format("--bandwidth: \"{}\" is not {}", text, what));
    return NumberFromText(text);
}

void take_rule(const std::string& text, DensitySettings& settings) {
    if (text == "href") {
        settings.Rule = BandwidthRule::kHref;
    } else if (text == "lscv") {
        settings.Rule = BandwidthRule::kLscv;
    } else if (text == "bcv") {
        settings.Rule = BandwidthRule::kBcv;
    } else if (text == "adhoc" || text.starts_with("adhoc:")) {
        settings.Rule = BandwidthRule::kAdHoc;
        if (text.size() > 5) settings.AdHoc.Parts = adhoc_parts_of(text.substr(6));
    } else if (text.starts_with("prop:")) {
        settings.Rule = BandwidthRule::kProportion;
        settings.Value = positive_number(text.substr(5), "a proportion above 0");
    } else {
        settings.Rule = BandwidthRule::kManual;
        settings.Value =
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

DensitySettings density_settings(const DensityOptions& options) {
    DensitySettings settings;
    take_rule(options.Bandwidth, settings);
    settings.Adaptive = options.Adaptive;
    settings.Rescale = options.Rescale;
    settings.AdHoc.CellSize = cell_size_of(options.CellSize);
    if (settings.Rule == BandwidthRule::kAdHoc) check_adhoc(settings.Adaptive, settings.Rescale);
    return settings;
}

std::int32_t adhoc_parts_of(const std::string& text) {
    const auto parts = analysis::parts_of(text);
    if (!parts)
        throw WrongCall(
            fmt::format("--bandwidth: \"{}\" is not a number of parts from 1 to {}", text, analysis::kMostParts));
    return *parts;
}

void check_adhoc(bool adaptive, bool rescale) {
    if (adaptive || rescale)
        throw WrongCall(
            "--bandwidth adhoc is for fixed kernels of coordinates as they are: leave out --adaptive and "
            "--rescale");
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
