#include "adapters/tracking/time_zone.h"

#include "platform/runtime_error.h"
#include "platform/text.h"

#include <limits>
#include <unicode/basictz.h>
#include <unicode/strenum.h>
#include <unicode/timezone.h>
#include <unicode/uchar.h>

namespace wxl::tracking {

namespace {

/// The name as ICU has it: offsets are written GMT+hh:mm there.
std::string icu_name(const std::string& name) {
    if (!name.empty() && (name[0] == '+' || name[0] == '-')) return "GMT" + name;
    if (name.size() > 3 && platform::EqualNoCase(name.substr(0, 3), "UTC") && (name[3] == '+' || name[3] == '-'))
        return "GMT" + name.substr(3);
    return name;
}

/// The zone in any case of its letters; null when there is none.
std::unique_ptr<icu::BasicTimeZone> zone_named(const std::string& name) {
    const auto wanted = icu::UnicodeString::fromUTF8(icu_name(name));
    std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::createTimeZone(wanted));
    if (*zone == icu::TimeZone::getUnknown()) {
        UErrorCode failure = U_ZERO_ERROR;
        const std::unique_ptr<icu::StringEnumeration> names(
            icu::TimeZone::createTimeZoneIDEnumeration(UCAL_ZONE_TYPE_ANY, nullptr, nullptr, failure));
        const icu::UnicodeString* found = nullptr;
        while (names && U_SUCCESS(failure) && (found = names->snext(failure)) != nullptr)
            if (found->caseCompare(wanted, U_FOLD_CASE_DEFAULT) == 0) break;
        if (found == nullptr || U_FAILURE(failure)) return nullptr;
        zone.reset(icu::TimeZone::createTimeZone(*found));
    }
    auto* basic = dynamic_cast<icu::BasicTimeZone*>(zone.get());
    if (basic == nullptr) return nullptr;
    static_cast<void>(zone.release());
    return std::unique_ptr<icu::BasicTimeZone>(basic);
}

}  // namespace

/// Offsets are asked for once for every quarter of an hour that follows another: clocks change at its start.
struct TimeZone::Cache {
    std::unique_ptr<icu::BasicTimeZone> Zone;
    std::int64_t Quarter = std::numeric_limits<std::int64_t>::min();
    std::int64_t Former = 0;  ///< seconds east of UTC by the clock as it was before a change nearby
    std::int64_t Latter = 0;

    std::int64_t Offset(double clock, UTimeZoneLocalOption option) const {
        UErrorCode failure = U_ZERO_ERROR;
        std::int32_t raw = 0;
        std::int32_t saving = 0;
        Zone->getOffsetFromLocal(clock, option, option, raw, saving, failure);
        return (static_cast<std::int64_t>(raw) + saving) / 1000;
    }
};

TimeZone::TimeZone(const std::string& name) : m_cache(std::make_unique<Cache>()) {
    m_cache->Zone = name.empty() ? nullptr : zone_named(name);
    if (!m_cache->Zone)
        platform::Raise(platform::error_number::kInvalidCall,
                        "there is no time zone \"" + name + "\": name one like Europe/Berlin, America/Denver or UTC+2");
}

TimeZone::~TimeZone() = default;

UtcTime TimeZone::ToUtc(std::int64_t clock) const {
    constexpr std::int64_t kQuarter = 900;
    Cache& cache = *m_cache;
    const std::int64_t quarter = (clock - (clock % kQuarter + kQuarter) % kQuarter) / kQuarter;
    if (quarter != cache.Quarter) {
        cache.Quarter = quarter;
        const double start = static_cast<double>(quarter * kQuarter) * 1000.0;
        cache.Former = cache.Offset(start, UCAL_TZ_LOCAL_FORMER);
        cache.Latter = cache.Offset(start, UCAL_TZ_LOCAL_LATTER);
    }
    UtcTime time{clock - cache.Former, UtcTime::Clock::kPlain};
    if (cache.Former != cache.Latter)
        time.Said = cache.Former > cache.Latter ? UtcTime::Clock::kTwice : UtcTime::Clock::kNever;
    return time;
}

}  // namespace wxl::tracking
