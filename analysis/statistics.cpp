#include "analysis/statistics.h"

#include "analysis/independence.h"
#include "engine/numeric.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <utility>

namespace wxl::analysis {

using platform::NumberText;
using platform::Point;

namespace {

constexpr std::size_t kSchoenerWidth = 10;
constexpr std::size_t kSwihartSladeWidth = 11;
constexpr int kDigits = 15;  ///< significant digits of a number as text

struct Spread {
    double X = 0.0;
    double Y = 0.0;
};

/// The value of `compute`; nothing where it is beyond the range of numbers.
template <class Compute>
auto if_representable(Compute&& compute) -> std::optional<decltype(compute())> {
    try {
        return compute();
    } catch (const platform::RuntimeError&) {
        return std::nullopt;
    }
}

/// Standard deviations with divisor n - 1; nothing where they are not defined.
std::optional<Spread> spread(std::span<const Point> fixes) {
    if (fixes.size() < 2) return std::nullopt;
    std::vector<Point> fromFirst;  // so that a coordinate that does not vary gives exactly 0
    fromFirst.reserve(fixes.size());
    for (const Point& fix : fixes) fromFirst.push_back({fix.X - fixes.front().X, fix.Y - fixes.front().Y});
    return if_representable([&] {
        return Spread{std::sqrt(engine::Variance(fromFirst, 0)), std::sqrt(engine::Variance(fromFirst, 1))};
    });
}

/// The reference bandwidth; nothing where the fixes have no spread.
std::optional<double> reference_bandwidth(std::span<const Point> fixes) {
    const auto deviations = spread(fixes);
    if (!deviations || (deviations->X == 0.0 && deviations->Y == 0.0)) return std::nullopt;
    return if_representable([&] { return engine::ReferenceBandwidth(fixes); });
}

/// Reference bandwidth after each coordinate was divided by its standard deviation.
std::optional<double> scaled_reference_bandwidth(std::span<const Point> fixes) {
    const auto deviations = spread(fixes);
    if (!deviations || deviations->X == 0.0 || deviations->Y == 0.0) return std::nullopt;
    std::vector<Point> unitVariance;
    unitVariance.reserve(fixes.size());
    for (const Point& fix : fixes) unitVariance.push_back({fix.X / deviations->X, fix.Y / deviations->Y});
    return reference_bandwidth(unitVariance);
}

std::string text_or_na(const std::optional<double>& value) {
    return value ? NumberText(*value) : "N/A";
}

std::string fitted_or_na(const std::optional<double>& value, std::size_t width) {
    return value ? fitted_number_text(*value, width) : "N/A";
}

/// `value` rounded to that many significant digits.
double round_to_digits(double value, int digits) {
    std::array<char, 64> text{};
    const auto end =
        std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::scientific, digits - 1);
    double rounded = value;
    std::from_chars(text.data(), end.ptr, rounded);
    return rounded;
}

}  // namespace

std::vector<IndependenceRow> independence_rows(std::span<const AnimalFixes> animals) {
    std::vector<IndependenceRow> rows;
    rows.reserve(animals.size());
    for (const AnimalFixes& animal : animals)
        rows.push_back({.Id = animal.Id,
                        .NamingId = animal.NamingId,
                        .Count = std::ssize(animal.Fixes),
                        .Schoener = Schoener(animal.Fixes),
                        .SwihartSlade = SwihartSlade(animal.Fixes),
                        .StepsBack = animal.StepsBack});
    return rows;
}

std::vector<VarianceRow> variance_rows(std::span<const AnimalFixes> animals) {
    std::vector<VarianceRow> rows;
    rows.reserve(animals.size());
    for (const AnimalFixes& animal : animals) {
        VarianceRow row{.Id = animal.Id, .Count = std::ssize(animal.Fixes), .SdX = {}, .SdY = {}, .Ratio = {}};
        if (const auto deviations = spread(animal.Fixes)) {
            row.SdX = deviations->X;
            row.SdY = deviations->Y;
            if (deviations->Y > 0.0) row.Ratio = deviations->X / deviations->Y;
        }
        rows.push_back(std::move(row));
    }
    return rows;
}

std::vector<HrefRow> href_rows(std::span<const AnimalFixes> animals) {
    std::vector<HrefRow> rows;
    rows.reserve(animals.size());
    for (const AnimalFixes& animal : animals)
        rows.push_back({.Id = animal.Id,
                        .Count = std::ssize(animal.Fixes),
                        .Href = reference_bandwidth(animal.Fixes),
                        .HrefScaled = scaled_reference_bandwidth(animal.Fixes)});
    return rows;
}

double largest_href(std::span<const HrefRow> rows) {
    double largest = 0.0;
    for (const HrefRow& row : rows) largest = std::max(largest, row.Href.value_or(0.0));
    return largest;
}

std::vector<std::string> cells_of(const IndependenceRow& row) {
    return {std::to_string(row.Count), fitted_or_na(row.Schoener, kSchoenerWidth),
            fitted_or_na(row.SwihartSlade, kSwihartSladeWidth)};
}

std::vector<std::string> cells_of(const VarianceRow& row) {
    return {std::to_string(row.Count), text_or_na(row.SdX), text_or_na(row.SdY), text_or_na(row.Ratio)};
}

std::vector<std::string> cells_of(const HrefRow& row) {
    return {std::to_string(row.Count), text_or_na(row.Href), text_or_na(row.HrefScaled)};
}

std::string fitted_number_text(double value, std::size_t width) {
    for (int digits = kDigits; digits > 0; --digits) {
        std::string text = NumberText(round_to_digits(value, digits));
        if (text.size() <= width) return text;
    }
    return NumberText(value);
}

}  // namespace wxl::analysis
