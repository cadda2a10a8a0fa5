#include "analysis/fix_times.h"

#include "platform/runtime_error.h"
#include "platform/text.h"
#include "tracking_times/timestamps.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace wxl::analysis {

using platform::FieldType;
using platform::FieldValue;

namespace {

constexpr std::array<std::string_view, 8> kNames = {"timestamp", "datetime", "date_time", "date-time",
                                                    "fixtime",   "fix_time", "gps_time",  "acq_time"};

bool is_number(const platform::Field& field) {
    return field.Type == FieldType::kInteger || field.Type == FieldType::kDouble;
}

bool is_timestamp(const platform::Field& field) {
    const bool named = std::any_of(kNames.begin(), kNames.end(),
                                   [&](std::string_view name) { return platform::EqualNoCase(name, field.Name); });
    return field.Type == FieldType::kText && named;
}

}  // namespace

FixTimes::FixTimes(std::span<const platform::Field> fields) {
    const auto take = [&](auto&& suits) {
        const auto found = std::find_if(fields.begin(), fields.end(), suits);
        if (m_index >= 0 || found == fields.end()) return;
        m_index = static_cast<int>(found - fields.begin());
        m_field = found->Name;
        m_isNumber = is_number(*found);
    };
    take([](const platform::Field& f) { return platform::EqualNoCase(f.Name, "Time2") && is_number(f); });
    take(is_timestamp);
    take([](const platform::Field& f) { return f.Type == FieldType::kDate; });
}

std::optional<double> FixTimes::Of(const platform::IFeature& fix) const {
    if (m_index < 0) return std::nullopt;
    const FieldValue value = fix.Value(m_index);
    if (platform::IsMissing(value)) return std::nullopt;
    if (m_isNumber) return platform::ValueNumber(value);
    const auto seconds = tracking_times::seconds_from_timestamp(platform::ValueText(value));
    return seconds ? std::optional(static_cast<double>(*seconds)) : std::nullopt;
}

std::string order_remark(std::int64_t stepsBack) {
    if (stepsBack == 0) return {};
    return (stepsBack == 1 ? "1 fix is" : std::to_string(stepsBack) + " fixes are") +
           std::string(
               " earlier than the one before: the indices of independence take the rows as they stand, so sort "
               "them by time");
}

std::string period_text(const tracking_times::TimeFacts& times) {
    if (!times.First || !times.Last) return {};
    const std::string first = tracking_times::date_text(*times.First);
    const std::string last = tracking_times::date_text(*times.Last);
    return first == last ? first : first + " – " + last;
}

}  // namespace wxl::analysis
