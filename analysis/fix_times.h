#pragma once
#include "platform/features.h"
#include "platform/values.h"
#include "tracking_times/time_facts.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace wxl::analysis {

/// When the fixes of a layer were taken, read from the first of these fields that it has: "Time2" (a number), a field
/// of dates, a text field with one of the usual names of timestamps. A time of day alone, and a text that is no
/// timestamp, tell nothing.
class FixTimes {
public:
    explicit FixTimes(std::span<const platform::Field> fields);

    /// Name of the field; empty when the layer has none.
    const std::string& Field() const { return m_field; }

    /// Seconds on the field's own scale; nothing where the fix does not tell.
    std::optional<double> Of(const platform::IFeature& fix) const;

private:
    std::string m_field;
    int m_index = -1;
    bool m_isNumber = false;
};

/// What is to be said of fixes of which `stepsBack` are earlier than the one before them; "" when none is.
std::string order_remark(std::int64_t stepsBack);

/// The days of the first and last fix: "2018-03-01 – 2018-05-01", or the one day; "" where they are not known.
std::string period_text(const tracking_times::TimeFacts& times);

}  // namespace wxl::analysis
