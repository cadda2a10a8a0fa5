#include "analysis/settings_text.h"

#include "platform/checked.h"
#include "platform/text.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <utility>

namespace wxl::analysis {
namespace {

using platform::IsNumeric;
using platform::NumberFromText;

constexpr std::string_view kProportions = "prop:";
constexpr std::string_view kAdHoc = "adhoc";
constexpr std::string_view kFullExtent = "full:";
constexpr std::string_view kReferenceExtent = "ref:";

std::optional<double> number_of(const std::string& text) {
    return IsNumeric(text) ? std::optional(NumberFromText(text)) : std::nullopt;
}

/// A blank after a comma is for reading; a word of a command has none.
std::string in_one_word(std::string text) {
    std::erase(text, ' ');
    return text;
}

}  // namespace

TypedNumber typed_number(std::string text) {
    const auto value = number_of(text);
    return {std::move(text), value};
}

TypedNumber typed_number(double value) {
    return {platform::NumberText(value), value};
}

TypedNumbers typed_numbers(std::string text) {
    TypedNumbers list;
    for (const std::string& piece : platform::Split(text, ',')) {
        const auto value = number_of(piece);
        if (!value && !list.NoNumber) list.NoNumber = piece;
        list.Values.push_back(value.value_or(0.0));
    }
    if (list.NoNumber) list.Values.clear();
    list.Text = std::move(text);
    return list;
}

CellSize cell_size_of(std::string text) {
    CellSize size;
    size.OfBandwidths = platform::EqualNoCase(text, kFittingCells);
    size.Typed = number_of(text).value_or(0.0);
    size.Side = platform::round_half_even(size.Typed, 0);
    size.Text = std::move(text);
    return size;
}

std::optional<Reach> reach_of(std::string text) {
    if (text.empty()) return Reach{};
    if (text == kWholeReach) return Reach{Reach::Kind::kWhole, std::move(text)};
    const double bandwidths = number_of(text).value_or(0.0);
    if (!(bandwidths > 0.0)) return std::nullopt;
    return Reach{Reach::Kind::kBandwidths, std::move(text), bandwidths};
}

std::optional<std::int32_t> parts_of(const std::string& text) {
    const double parts = number_of(text).value_or(0.0);
    if (!(parts >= 1.0 && parts <= kMostParts) || parts != std::floor(parts)) return std::nullopt;
    return static_cast<std::int32_t>(parts);
}

BandwidthChoice bandwidth_of(const std::string& text) {
    if (text == "href") return {BandwidthMethod::kHref};
    if (text == "lscv") return {BandwidthMethod::kLscv};
    if (text == "bcv") return {BandwidthMethod::kBcv};
    if (text == kAdHoc) return {BandwidthMethod::kAdHoc, {}, 1};
    if (text.starts_with(std::string(kAdHoc) + ":"))
        return {BandwidthMethod::kAdHoc, {}, parts_of(text.substr(kAdHoc.size() + 1))};
    if (text.starts_with(kProportions))
        return {BandwidthMethod::kProportion, typed_numbers(text.substr(kProportions.size()))};
    return {BandwidthMethod::kManual, typed_numbers(text)};
}

std::string bandwidth_text(const Settings& settings) {
    switch (settings.Method) {
        case BandwidthMethod::kLscv:
            return "lscv";
        case BandwidthMethod::kBcv:
            return "bcv";
        case BandwidthMethod::kManual:
            return in_one_word(settings.Bandwidths.Text);
        case BandwidthMethod::kProportion:
            return std::string(kProportions) + in_one_word(settings.Proportions.Text);
        case BandwidthMethod::kAdHoc:
            return std::string(kAdHoc) + (settings.AdHocParts == 1 ? "" : ":" + std::to_string(settings.AdHocParts));
        case BandwidthMethod::kHref:
            break;
    }
    return "href";
}

std::optional<ExtentChoice> extent_of(const std::string& text) {
    if (text == "full") return ExtentChoice{ExtentMode::kFull};
    if (text == "min") return ExtentChoice{ExtentMode::kMinimum};
    if (text.starts_with(kFullExtent))
        return ExtentChoice{ExtentMode::kFull, typed_number(text.substr(kFullExtent.size()))};
    if (text.starts_with(kReferenceExtent) && text.size() > kReferenceExtent.size())
        return ExtentChoice{ExtentMode::kReference, std::nullopt, text.substr(kReferenceExtent.size())};
    return std::nullopt;
}

std::string extent_text(const Settings& settings) {
    switch (settings.Mode) {
        case ExtentMode::kMinimum:
            return "min";
        case ExtentMode::kReference:
            return std::string(kReferenceExtent) + settings.ReferenceName;
        case ExtentMode::kFull:
            break;
    }
    return std::string(kFullExtent) + settings.Buffer.Text;
}

std::optional<std::string> not_positive(const TypedNumbers& list) {
    for (const std::string& piece : platform::Split(list.Text, ','))
        if (!is_positive_number(piece)) return piece;
    return std::nullopt;
}

std::optional<double> above_hundred(const TypedNumbers& percentages) {
    const auto found = std::ranges::find_if(percentages.Values, [](double percent) { return percent > 100.0; });
    return found == percentages.Values.end() ? std::nullopt : std::optional(*found);
}

bool is_positive_number(const std::string& text) {
    const auto value = number_of(text);
    return value && *value > 0.0;
}

}  // namespace wxl::analysis
