#include "apps/cli/size_text.h"

#include "analysis/summary_rows.h"
#include "pictures/axis.h"

#include <fmt/format.h>

namespace wxl::cli {

namespace {

constexpr int kDigits = 4;
constexpr double kHectares = 100.0;  ///< of a square kilometre

}  // namespace

std::string short_number(double value) {
    return pictures::ShortNumber(value, kDigits);
}

std::string unit_text(const platform::SpatialReference& reference) {
    if (reference.MetersPerUnit == 1.0 && !reference.IsGeographic) return "m";
    return reference.UnitName.empty() ? "map units" : reference.UnitName;
}

std::string area_text(double area, const platform::SpatialReference& reference) {
    const auto kilometres = analysis::square_kilometres(area, reference);
    if (!kilometres) return fmt::format("{} square {}", short_number(area), unit_text(reference));
    if (*kilometres < 1.0) return short_number(*kilometres * kHectares) + " ha";
    return short_number(*kilometres) + " km2";
}

std::string kilometres_text(double area, const platform::SpatialReference& reference, int digits) {
    return fmt::format("{:.{}g}", analysis::square_kilometres(area, reference).value_or(area), digits);
}

std::string_view kilometres_unit(const platform::SpatialReference& reference) {
    return analysis::square_kilometres(1.0, reference) ? " km2" : "";
}

}  // namespace wxl::cli
