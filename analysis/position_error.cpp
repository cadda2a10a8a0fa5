#include "analysis/position_error.h"

#include "comparison/quantile.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace wxl::analysis {
namespace {

using platform::Field;
using platform::FieldType;
using platform::FieldValue;

constexpr double kFarthestError = 1e6;  ///< metres

/// Names of columns of errors in metres, letters and digits alone; the last are what a shapefile leaves of some.
constexpr std::array<std::string_view, 25> kMetres = {"locationerrornumerical",
                                                      "locationerror",
                                                      "positionerror",
                                                      "gpshorizontalerror",
                                                      "horizontalerror",
                                                      "gpserror",
                                                      "fixerror",
                                                      "3derror",
                                                      "eobshorizontalaccuracyestimate",
                                                      "gpshorizontalaccuracyestimate",
                                                      "horizontalaccuracyestimate",
                                                      "horizontalaccuracy",
                                                      "haccuracy",
                                                      "hacc",
                                                      "locationaccuracy",
                                                      "positionaccuracy",
                                                      "coordinateuncertaintyinmeters",
                                                      "argoserrorradius",
                                                      "errorradius",
                                                      "epe",
                                                      "ehpe",
                                                      "locatione",
                                                      "eobshoriz",
                                                      "argoserro",
                                                      "errorradi"};
constexpr std::array<std::string_view, 8> kClasses = {
    "argoslc", "lc", "argosclass", "argoslocationclass", "lcargos", "locationclass", "locquality", "locclass"};
constexpr std::array<std::pair<std::string_view, double>, 6> kArgosErrors = {
    {{"3", 490.0}, {"2", 1010.0}, {"1", 1200.0}, {"0", 4180.0}, {"A", 6190.0}, {"B", 10280.0}}};

/// Small letters and digits of a name, without a unit of metres behind it; nothing where another unit stands there.
std::string bare(const std::string& name) {
    std::string letters;
    const std::size_t unit = name.find_first_of("[(");
    for (const char c : name.substr(0, unit)) {
        if ((c >= 'a' && c <= 'z') || (c >= '0' && c <= '9')) letters += c;
        if (c >= 'A' && c <= 'Z') letters += static_cast<char>(c - 'A' + 'a');
    }
    if (unit != std::string::npos && name.compare(unit + 1, 2, "m]") != 0 && name.compare(unit + 1, 2, "m)") != 0)
        return {};
    return letters;
}

template <std::size_t N>
bool is_one_of(const std::array<std::string_view, N>& names, std::string_view name) {
    return std::ranges::find(names, name) != names.end();
}

bool tells_metres(const Field& field) {
    if (field.Type != FieldType::kDouble && field.Type != FieldType::kInteger) return false;
    const std::string name = bare(field.Name);
    return is_one_of(kMetres, name) || (name.ends_with("m") && is_one_of(kMetres, name.substr(0, name.size() - 1)));
}

bool tells_classes(const Field& field) {
    return field.Type != FieldType::kDate && is_one_of(kClasses, bare(field.Name));
}

std::optional<PositionError> median_of(std::vector<double> errors, std::size_t fixes, const std::string& field,
                                       bool ofClasses) {
    if (errors.empty() || 2 * errors.size() < fixes) return std::nullopt;
    std::ranges::sort(errors);
    return PositionError{comparison::quantile(errors, 50.0), field, ofClasses};
}

}  // namespace

std::optional<double> argos_error(std::string_view name) {
    const std::string wanted = platform::UpperCase(platform::Trim(name));
    for (const auto& [known, metres] : kArgosErrors)
        if (known == wanted) return metres;
    return std::nullopt;
}

bool tells_position_error(const Field& field) {
    return tells_metres(field) || tells_classes(field);
}

PositionErrorFields::PositionErrorFields(std::span<const Field> fields) {
    const auto first = [&](auto&& suits) -> Source {
        const auto found = std::ranges::find_if(fields, suits);
        return found == fields.end() ? Source{} : Source{found->Name, static_cast<int>(found - fields.begin())};
    };
    m_metres = first(tells_metres);
    m_classes = first(tells_classes);
}

std::vector<std::string> PositionErrorFields::Names() const {
    std::vector<std::string> names;
    for (const Source* source : {&m_metres, &m_classes})
        if (source->Index >= 0) names.push_back(source->Name);
    return names;
}

void PositionErrorFields::Take(const platform::IFeature& fix, PositionErrors& errors) const {
    if (m_metres.Index >= 0) {
        const FieldValue value = fix.Value(m_metres.Index);
        const double metres = platform::IsMissing(value) ? 0.0 : platform::ValueNumber(value);
        if (metres > 0.0 && metres < kFarthestError) errors.Metres.push_back(metres);
    }
    if (m_classes.Index >= 0)
        if (const auto metres = argos_error(platform::ValueText(fix.Value(m_classes.Index))))
            errors.OfArgosClasses.push_back(*metres);
}

std::optional<PositionError> PositionErrorFields::Median(PositionErrors errors, std::size_t fixes) const {
    if (auto told = median_of(std::move(errors.Metres), fixes, m_metres.Name, false)) return told;
    return median_of(std::move(errors.OfArgosClasses), fixes, m_classes.Name, true);
}

}  // namespace wxl::analysis
