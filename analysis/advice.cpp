#include "analysis/advice.h"

#include "analysis/diagnosis.h"
#include "analysis/settings_text.h"
#include "analysis/summary_rows.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <span>

namespace wxl::analysis {
namespace {

constexpr double kManySharing = 0.01;
constexpr double kRangePercent = 95.0;
constexpr double kLeastRangePercent = 90.0;
constexpr double kReadAs = 0.05;  // share by which an index may be rounded
constexpr std::array kSchoenerLimits = {1.6, 2.4};
constexpr std::array kSwihartSladeLimits = {0.6};

/// The method that is advised, and what speaks for it.
struct Advice {
    BandwidthMethod Method = BandwidthMethod::kLscv;
    std::string Text;
};

bool is_many_sharing(const AdviceFacts& facts) {
    return static_cast<double>(facts.Coincident.Fixes) >= kManySharing * static_cast<double>(facts.Count);
}

bool is_given(const AdviceFacts& facts, BandwidthMethod method) {
    return facts.Given && facts.Given->Method == method;
}

/// Whether a search has chosen the bandwidth.
bool is_found(const AdviceFacts& facts) {
    return facts.Given && is_search(facts.Given->Method) && facts.Given->Minimized;
}

/// Whether whoever started the run has chosen it.
bool is_own(const AdviceFacts& facts) {
    return is_given(facts, BandwidthMethod::kManual) || is_given(facts, BandwidthMethod::kProportion);
}

bool is_below_error(const AdviceFacts& facts, double mapUnits) {
    return facts.Error && mapUnits > 0.0 && mapUnits * facts.MetresPerUnit < facts.Error->Metres &&
           facts.MetresPerUnit > 0.0;
}

bool is_given_below_error(const AdviceFacts& facts) {
    return facts.Given && is_below_error(facts, facts.Given->MapUnits);
}

bool is_below_cell(const AdviceFacts& facts) {
    return facts.CellSize && facts.Given->MapUnits > 0.0 && facts.Given->MapUnits < *facts.CellSize;
}

bool is_in_many_parts(const AdviceFacts& facts) {
    return facts.Given && facts.Given->Range && facts.Given->Range->Parts >= kManyParts;
}

/// Whether it is read as the same: as near, and on the same side of what counts as significant.
bool is_read_as(double rounded, double index, std::span<const double> limits) {
    return std::abs(rounded - index) <= kReadAs * std::abs(index) &&
           std::all_of(limits.begin(), limits.end(), [&](double limit) {
               return (rounded < limit) == (index < limit) && (rounded > limit) == (index > limit);
           });
}

/// With two decimals, or as many more as it takes to be read as the same.
std::string index_text(double index, std::span<const double> limits) {
    for (double scale = 100.0; scale < 1e15; scale *= 10.0) {
        const double rounded = std::round(index * scale) / scale;
        if (is_read_as(rounded, index, limits)) return platform::NumberText(rounded);
    }
    return platform::NumberText(index);
}

std::string indices_text(const AdviceFacts& facts) {
    std::string text;
    if (facts.Schoener) text += "Schoener " + index_text(*facts.Schoener, kSchoenerLimits);
    if (facts.SwihartSlade)
        text +=
            (text.empty() ? "" : ", ") + ("Swihart and Slade " + index_text(*facts.SwihartSlade, kSwihartSladeLimits));
    return text;
}

std::string metres_text(const AdviceFacts& facts, double mapUnits) {
    return short_number(mapUnits * facts.MetresPerUnit) + " m";
}

/// "the error of its positions (median 5.3 m, from location-error-numerical)"
std::string error_text(const PositionError& error) {
    return "the error of its positions (median " + short_number(error.Metres) + " m, from " +
           (error.OfArgosClasses ? "the Argos classes of " + error.Field + " after Costa et al. 2010" : error.Field) +
           ")";
}

std::string parts_of_range(const RangeInParts& range) {
    return platform::NumberText(range.Percent) + " % range is in " + parts_text(range.Parts);
}

std::string search_name(const AdviceFacts& facts) {
    return facts.Given->Method == BandwidthMethod::kBcv ? "BCV" : "LSCV";
}

Advice adhoc_as(const std::string& reason, const std::string& limit = {}) {
    return {BandwidthMethod::kAdHoc,
            "adhoc, as " + reason + ": the smallest proportion of HREF that leaves the range whole (Kie 2013)" + limit};
}

Advice href_as(const std::string& reason) {
    return {BandwidthMethod::kHref, "HREF, as " + reason};
}

/// What a bandwidth that a search has chosen speaks for; nothing where it is good.
std::optional<Advice> advice_against(const AdviceFacts& facts) {
    if (is_below_cell(facts)) return adhoc_as("the bandwidth of " + search_name(facts) + " is smaller than a cell");
    if (is_given_below_error(facts))
        return adhoc_as("the bandwidth of " + search_name(facts) + ", " + metres_text(facts, facts.Given->MapUnits) +
                            ", is smaller than " + error_text(*facts.Error) +
                            ", and finer detail is error, not use of space (Moser and Garton 2007)",
                        ", and not below that error");
    if (is_in_many_parts(facts))
        return adhoc_as("with the bandwidth of " + search_name(facts) + " its " + parts_of_range(*facts.Given->Range) +
                        ", often a sign of too small a bandwidth (Hemson et al. 2005)");
    return std::nullopt;
}

Advice advice_on_search(const AdviceFacts& facts) {
    if (is_given(facts, BandwidthMethod::kLscv) && !facts.Given->Minimized)
        return adhoc_as("LSCV has no minimum inside its range");
    if (is_found(facts))
        if (auto against = advice_against(facts)) return *against;
    if (is_given(facts, BandwidthMethod::kHref) && is_in_many_parts(facts))
        return href_as("with it its " + parts_of_range(*facts.Given->Range) +
                       " already, and a search would make more of them: look whether it is one range, or those of "
                       "several seasons or places (Kie 2013)");
    if (is_given(facts, BandwidthMethod::kLscv))
        return {BandwidthMethod::kLscv,
                "LSCV, as its search has a minimum (Seaman and Powell 1996); HREF is wider where there are several "
                "centres (Worton 1989)"};
    return {BandwidthMethod::kLscv,
            "LSCV, if its search has a minimum (Seaman and Powell 1996); HREF suits one centre of activity (Worton "
            "1989)"};
}

Advice method_advice(const AdviceFacts& facts) {
    if (facts.Count < kFixesForSearch)
        return href_as(fixes_text(facts.Count) +
                       " are too few for a search (30 or more: Seaman et al. 1999); an area of so few is a first look");
    if (is_many_sharing(facts))
        return href_as(std::to_string(facts.Coincident.Fixes) + " of its " + std::to_string(facts.Count) +
                       " fixes share a place, by rounding or by rest, and LSCV then goes to the smallest bandwidth "
                       "(Silverman 1986)");
    if (facts.Href && is_below_error(facts, *facts.Href))
        return href_as("even that, " + metres_text(facts, *facts.Href) + ", is smaller than " +
                       error_text(*facts.Error) +
                       ": the range tells of the error as much as of the animal (Moser and Garton 2007)");
    return advice_on_search(facts);
}

/// What is to be said of a bandwidth of one's own.
std::string remark_on_own(const AdviceFacts& facts) {
    if (!is_own(facts)) return {};
    if (is_given_below_error(facts))
        return "; the bandwidth of this run, " + metres_text(facts, facts.Given->MapUnits) + ", is smaller than " +
               error_text(*facts.Error) + ", and finer detail is error, not use of space (Moser and Garton 2007)";
    if (is_in_many_parts(facts))
        return "; with the bandwidth of this run its " + parts_of_range(*facts.Given->Range) +
               ", often a sign of too small a bandwidth (Kie 2013)";
    return {};
}

}  // namespace

AdviceFacts advice_facts(const AnimalRecord& record, const platform::SpatialReference& reference) {
    AdviceFacts facts{.Count = record.SampleSize,
                      .Schoener = record.Schoener,
                      .SwihartSlade = record.SwihartSlade,
                      .Coincident = record.Coincident,
                      .Given = GivenBandwidth{.Method = record.Method,
                                              .Minimized = record.Minimized,
                                              .MapUnits = record.BandwidthMapUnits,
                                              .Range = range_in_parts(record.Isopleths)},
                      .Href = href_in_map_units(record),
                      .CellSize = record.Grid.CellSize,
                      .Error = record.Error};
    if (!reference.IsGeographic) facts.MetresPerUnit = reference.MetersPerUnit;
    return facts;
}

std::optional<RangeInParts> range_in_parts(std::span<const IsoplethRecord> isopleths) {
    std::optional<RangeInParts> range;
    for (const IsoplethRecord& isopleth : isopleths) {
        if (isopleth.Percent < kLeastRangePercent || isopleth.Percent >= 100.0 || isopleth.Parts == 0) continue;
        if (isopleth.Percent == kRangePercent) return RangeInParts{isopleth.Percent, isopleth.Parts};
        if (!range || isopleth.Percent > range->Percent) range = {isopleth.Percent, isopleth.Parts};
    }
    return range;
}

bool is_autocorrelated(const AdviceFacts& facts) {
    return (facts.Schoener && (*facts.Schoener < kSchoenerLimits[0] || *facts.Schoener > kSchoenerLimits[1])) ||
           (facts.SwihartSlade && *facts.SwihartSlade > kSwihartSladeLimits[0]);
}

BandwidthMethod advised_method(const AdviceFacts& facts) {
    return method_advice(facts).Method;
}

std::string advice_clause(const AdviceFacts& facts) {
    if (facts.Count < 2) return {};
    std::string advice = method_advice(facts).Text + remark_on_own(facts);
    if (!is_autocorrelated(facts)) return advice;
    return "wxl akde, as fixes depend on each other (" + indices_text(facts) +
           ") and ranges of independent fixes come out too small then (Fleming et al. 2015); of the other methods " +
           advice;
}

std::string advice_text(const AdviceFacts& facts) {
    const std::string clause = advice_clause(facts);
    return clause.empty() ? clause : "advised: " + clause;
}

}  // namespace wxl::analysis
