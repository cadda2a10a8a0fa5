#include "analysis/methods_paragraph.h"

#include "analysis/animal_run.h"
#include "analysis/diagnosis.h"
#include "analysis/summary_rows.h"
#include "comparison/quantile.h"
#include "platform/text.h"
#include "tracking_times/timestamps.h"

#include <algorithm>
#include <utility>

namespace wxl::analysis {
namespace {

using platform::NumberText;

constexpr double kSecondsPerMinute = 60.0;
constexpr double kSecondsPerHour = 3600.0;
constexpr double kSecondsPerDay = 86400.0;
constexpr double kHalf = 50.0;  // %

std::string counted(std::size_t count, const std::string& one, const std::string& many) {
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

/// "12", or "median 12, range 3 to 20" where there are several; `unit` with its blank.
std::string spread_text(std::vector<double> values, const std::string& unit) {
    if (values.empty()) return "not known";
    std::ranges::sort(values);
    if (short_number(values.front()) == short_number(values.back())) return short_number(values.front()) + unit;
    return "median " + short_number(comparison::quantile(values, kHalf)) + unit + ", range " +
           short_number(values.front()) + " to " + short_number(values.back()) + unit;
}

std::string days_text(const std::vector<double>& days) {
    const bool single = std::ranges::all_of(days, [](double count) { return count == 1.0; });
    return spread_text(days, single ? " day" : " days");
}

/// "95 %, 75 % and 50 %"; `unit` with its blank.
std::string list_text(const std::vector<double>& values, const std::string& unit) {
    std::string text;
    for (std::size_t i = 0; i < values.size(); ++i) {
        const char* before = i == 0 ? "" : i + 1 == values.size() ? " and " : ", ";
        text += before + NumberText(values[i]) + unit;
    }
    return text;
}

std::string length_unit(const platform::SpatialReference& reference) {
    if (reference.MetersPerUnit == 1.0 && !reference.IsGeographic) return " m";
    return " " + (reference.UnitName.empty() ? "map units" : reference.UnitName);
}

/// A length of time in the unit that reads best.
std::string duration_text(double seconds) {
    if (seconds < 2.0 * kSecondsPerMinute) return short_number(seconds) + " s";
    if (seconds < 2.0 * kSecondsPerHour) return short_number(seconds / kSecondsPerMinute) + " min";
    if (seconds < 2.0 * kSecondsPerDay) return short_number(seconds / kSecondsPerHour) + " h";
    return short_number(seconds / kSecondsPerDay) + " days";
}

std::string durations_text(std::vector<double> seconds) {
    std::ranges::sort(seconds);
    std::string first = duration_text(seconds.front());
    const std::string last = duration_text(seconds.back());
    if (first == last) return first;
    return "median " + duration_text(comparison::quantile(seconds, kHalf)) + ", range " + first + " to " + last;
}

std::string date_of(std::int64_t seconds) {
    return tracking_times::date_text(seconds);
}

template <class Items, class Member>
std::vector<double> gathered(const Items& items, Member&& member) {
    std::vector<double> values;
    for (const auto& item : items)
        if (const std::optional<double> value = member(item)) values.push_back(*value);
    return values;
}

/// The largest share, cut rather than rounded, so that it is no promise.
std::string held_text(double share) {
    return NumberText(static_cast<double>(static_cast<int>(share * 10000.0)) / 100.0) + " %";
}

const char* reference_of_method(BandwidthMethod method) {
    switch (method) {
        case BandwidthMethod::kLscv:
            return "least squares cross-validation (Rudemo 1982, Bowman 1984)";
        case BandwidthMethod::kBcv:
            return "biased cross-validation (Sain et al. 1994)";
        case BandwidthMethod::kHref:
        case BandwidthMethod::kManual:
        case BandwidthMethod::kProportion:
        case BandwidthMethod::kAdHoc:
            break;
    }
    return "";
}

}  // namespace

MethodsParagraph::MethodsParagraph(const RunFrame& frame, const GroupedFixes& animals, std::string program)
    : m_program(std::move(program)),
      m_wanted(frame.Wanted),
      m_reference(frame.Reference),
      m_values(frame.Values),
      m_withoutId(animals.WithoutId),
      m_withoutPlace(animals.NullGeometry) {}

void MethodsParagraph::Add(const AnimalRecord& record) {
    if (m_animals.empty() || m_animals.back().NamingId != record.NamingId) {
        Animal animal{.NamingId = record.NamingId,
                      .Fixes = static_cast<double>(record.SampleSize),
                      .Coincident = record.Coincident.Fixes,
                      .Times = record.Times,
                      .Schoener = record.Schoener,
                      .SwihartSlade = record.SwihartSlade,
                      .Levels = std::nullopt,
                      .PolygonAreas = {}};
        if (record.Curve) animal.Levels = record.Curve->Levelling && record.Curve->Levelling->Reached;
        for (const auto& polygon : record.ConvexPolygons) animal.PolygonAreas.push_back(area_of(polygon));
        m_animals.push_back(std::move(animal));
    }
    if (record.Status != 0) {
        ++m_failed;
        return;
    }
    Distribution one{.Value = record.Value,
                     .Bandwidth = record.BandwidthMapUnits,
                     .Proportion = record.AdHoc.Proportion,
                     .AdHoc = record.AdHoc.Status,
                     .Minimized = record.Minimized,
                     .CellSize = record.Grid.CellSize,
                     .Held = record.Volume / m_wanted.ScalingFactor.Value.value_or(1.0),
                     .Areas = {}};
    for (const IsoplethRecord& isopleth : record.Isopleths) one.Areas.push_back(isopleth.Area);
    m_distributions.push_back(std::move(one));
}

std::string MethodsParagraph::Text() const {
    if (m_animals.empty()) return {};
    return SampleText() + ChoiceText() + TimesText() + KernelText() + BandwidthText() + FailureText() + ReachText() +
           IsoplethText() + PolygonText() + CurveText() + IndependenceText() +
           " Ranges were not divided by season or otherwise, and their overlap was not computed in this run. Computed "
           "with " +
           m_program + ".";
}

std::string MethodsParagraph::SampleText() const {
    double fixes = 0.0;
    for (const Animal& animal : m_animals) fixes += animal.Fixes;
    const std::string all = NumberText(fixes) + (fixes == 1.0 ? " fix" : " fixes");
    if (m_animals.size() == 1) return "We estimated the home range of 1 animal from " + all + ".";
    return "We estimated the home ranges of " + std::to_string(m_animals.size()) + " animals from " + all + " (" +
           spread_text(gathered(m_animals, [](const Animal& a) { return std::optional(a.Fixes); }), "") +
           " per animal).";
}

/// Which fixes count, and what became of the others.
std::string MethodsParagraph::ChoiceText() const {
    std::string text;
    if (!m_wanted.Where.empty())
        text += " Fixes were those that meet the condition " + m_wanted.Where + ".";
    else if (m_wanted.SelectedOnly)
        text += " Fixes were selected by hand.";
    if (m_withoutId > 0)
        text += " " + counted(static_cast<std::size_t>(m_withoutId), "point", "points") + " without an animal's name " +
                (m_withoutId == 1 ? "was" : "were") + " left out.";
    if (m_withoutPlace) text += " Points without a place were left out.";
    std::int64_t coincident = 0;
    for (const Animal& animal : m_animals) coincident += animal.Coincident;
    text += " No fix was removed as a duplicate, and none to thin the data";
    if (coincident > 0)
        text += "; " + counted(static_cast<std::size_t>(coincident), "fix", "fixes") +
                " at the place of another of the same animal stayed";
    return text + ".";
}

std::string MethodsParagraph::TimesText() const {
    std::optional<std::int64_t> first;
    std::optional<std::int64_t> last;
    std::size_t without = 0;
    for (const Animal& animal : m_animals) {
        without += animal.Times.WithoutTime;
        if (!animal.Times.First || !animal.Times.Last) continue;
        first = std::min(first.value_or(*animal.Times.First), *animal.Times.First);
        last = std::max(last.value_or(*animal.Times.Last), *animal.Times.Last);
    }
    if (!first) return " Tracking period and fix interval are not in the data.";
    const auto of_times = [&](auto&& member) {
        return gathered(m_animals, [&](const Animal& animal) {
            return animal.Times.First ? member(animal.Times) : std::optional<double>();
        });
    };
    using tracking_times::TimeFacts;
    std::string text =
        " Tracking lasted from " + date_of(*first) + " to " + date_of(*last) + " (UTC), for " +
        days_text(of_times([](const TimeFacts& t) { return std::optional(t.Days); })) + " per animal, with a fix on " +
        days_text(of_times([](const TimeFacts& t) { return std::optional(static_cast<double>(t.DaysWithFix)); })) + ".";
    const auto intervals =
        of_times([](const TimeFacts& t) { return t.Intervals ? std::optional(t.Intervals->Median) : std::nullopt; });
    if (!intervals.empty())
        text += " The median interval between fixes was " + durations_text(intervals) +
                " (interquartile range: " + durations_text(of_times([](const TimeFacts& t) {
                    return t.Intervals ? std::optional(t.Intervals->Range()) : std::nullopt;
                })) +
                ").";
    if (without > 0) text += " " + counted(without, "fix has", "fixes have") + " no time.";
    return text;
}

std::string MethodsParagraph::KernelText() const {
    const std::string system = m_reference.Name.empty() ? "a coordinate system that is not named" : m_reference.Name;
    std::string text = " Coordinates were in " + system +
                       ". Utilization distributions (Van Winkle 1975) were estimated "
                       "with " +
                       (m_wanted.FixedKernel ? "a fixed" : "an adaptive") + " bivariate normal kernel (Worton 1989" +
                       (m_wanted.FixedKernel ? "" : ", Silverman 1986") + ")";
    if (m_wanted.Rescale) text += " of coordinates rescaled to unit variance";
    if (!m_distributions.empty())
        text +=
            ", on rasters with cells of " +
            spread_text(gathered(m_distributions, [](const Distribution& one) { return std::optional(one.CellSize); }),
                        length_unit(m_reference));
    return text + ".";
}

std::vector<double> MethodsParagraph::Bandwidths() const {
    return gathered(m_distributions, [](const Distribution& one) { return std::optional(one.Bandwidth); });
}

std::string MethodsParagraph::BandwidthText() const {
    const std::string values = spread_text(Bandwidths(), length_unit(m_reference));
    switch (m_wanted.Method) {
        case BandwidthMethod::kLscv:
        case BandwidthMethod::kBcv:
            return SearchText();
        case BandwidthMethod::kManual:
            return " The bandwidth was set to " + list_text(m_values, length_unit(m_reference)) + ".";
        case BandwidthMethod::kProportion:
            return " Bandwidths were " + list_text(m_values, "") +
                   " times the reference bandwidth HREF (Silverman 1986, Worton 1989): " + values + ".";
        case BandwidthMethod::kAdHoc:
            return AdHocText();
        case BandwidthMethod::kHref:
            break;
    }
    return " The bandwidth was the reference bandwidth HREF (Silverman 1986, Worton 1989): " + values + ".";
}

std::string MethodsParagraph::SearchText() const {
    const auto missed = static_cast<std::size_t>(
        std::ranges::count_if(m_distributions, [](const Distribution& one) { return !one.Minimized; }));
    std::string text =
        std::string(" The bandwidth was chosen by ") + reference_of_method(m_wanted.Method) + " between 0.05 and " +
        (m_wanted.Method == BandwidthMethod::kLscv ? "2" : "3") +
        " times the reference bandwidth HREF (Silverman 1986): " + spread_text(Bandwidths(), length_unit(m_reference)) +
        ".";
    if (missed > 0)
        text += " The score had no minimum in that range for " + std::to_string(missed) + " of " +
                counted(m_distributions.size(), "animal", "animals") + ", for which HREF was used.";
    return text;
}

std::string MethodsParagraph::AdHocText() const {
    const auto count = [&](comparison::AdHocStatus status) {
        return static_cast<std::size_t>(
            std::ranges::count_if(m_distributions, [&](const Distribution& one) { return one.AdHoc == status; }));
    };
    const auto proportions = gathered(m_distributions, [](const Distribution& one) {
        return one.Proportion > 0.0 ? std::optional(one.Proportion) : std::nullopt;
    });
    std::string text =
        " The bandwidth was the smallest proportion of the reference bandwidth HREF (Silverman 1986) at "
        "which the 95 % range was in " +
        parts_text(m_wanted.AdHocParts) + " (after Kie 2013): " + spread_text(proportions, "") + " of HREF, " +
        spread_text(Bandwidths(), length_unit(m_reference)) + ".";
    if (const std::size_t parted = count(comparison::AdHocStatus::kInPartsAtReference); parted > 0)
        text += " " + counted(parted, "range was", "ranges were") + " in more parts at HREF already, which was used.";
    if (const std::size_t whole = count(comparison::AdHocStatus::kWholeToCellSize); whole > 0)
        text += " " + counted(whole, "range", "ranges") + " stayed whole down to the cell size.";
    return text;
}

std::string MethodsParagraph::FailureText() const {
    if (m_failed == 0) return {};
    return " " + std::to_string(m_failed) + " of " +
           counted(m_failed + m_distributions.size(), "distribution", "distributions") + " could not be computed.";
}

std::string MethodsParagraph::ReachText() const {
    if (m_distributions.empty()) return {};
    std::string text;
    switch (m_wanted.KernelReach.How) {
        case Reach::Kind::kWhole:
            text = " Kernels ended at four bandwidths of the widest of them";
            break;
        case Reach::Kind::kBandwidths:
            text = " Kernels ended at " + m_wanted.KernelReach.Text + " bandwidths";
            break;
        case Reach::Kind::kUsual:
            text = m_wanted.Method == BandwidthMethod::kProportion ? " Kernels ended at four times HREF"
                                                                   : " Kernels ended at four bandwidths";
    }
    const auto held = std::ranges::min(m_distributions, {}, &Distribution::Held).Held;
    return text + ", and rasters held at least " + held_text(held) + " of each distribution.";
}

std::string MethodsParagraph::AreaText(std::vector<double> areas) const {
    if (!square_kilometres(1.0, m_reference))
        return spread_text(std::move(areas), " square" + length_unit(m_reference));
    for (double& area : areas) area = square_kilometres(area, m_reference).value_or(0.0);
    return spread_text(std::move(areas), " km²");
}

std::string MethodsParagraph::IsoplethAreas(double value) const {
    const std::vector<double>& percentages = m_wanted.Percentages.Values;
    std::string text;
    for (std::size_t i = 0; i < percentages.size(); ++i) {
        const auto areas = gathered(m_distributions, [&](const Distribution& one) {
            return one.Value == value && i < one.Areas.size() ? one.Areas[i] : std::nullopt;
        });
        text += (i == 0 ? "" : "; ") + NumberText(percentages[i]) + " %: " + AreaText(areas);
    }
    return text;
}

std::string MethodsParagraph::IsoplethText() const {
    if (!m_wanted.Isopleths) return " No isopleths were drawn.";
    if (m_distributions.empty()) return {};
    std::string text = " Areas are those within the isopleths that enclose " +
                       list_text(m_wanted.Percentages.Values, " %") + " of the volume";
    for (const double value : m_values) {
        if (m_values.size() > 1)
            text += std::string(value == m_values.front() ? ", " : "; ") +
                    (m_wanted.Method == BandwidthMethod::kProportion
                         ? "at " + NumberText(value) + " times HREF"
                         : "with a bandwidth of " + NumberText(value) + length_unit(m_reference));
        text += " (" + IsoplethAreas(value) + ")";
    }
    return text + ".";
}

std::string MethodsParagraph::PolygonText() const {
    const std::vector<double>& percentages = m_wanted.ConvexPercentages.Values;
    if (percentages.empty()) return {};
    std::string text = " Minimum convex polygons (Mohr 1947) around " + list_text(percentages, " %") + " of the fixes" +
                       (std::ranges::min(percentages) < 100.0 ? ", those nearest to their mean," : "") +
                       " had areas of ";
    for (std::size_t i = 0; i < percentages.size(); ++i)
        text += (i == 0 ? "" : "; ") + NumberText(percentages[i]) +
                " %: " + AreaText(gathered(m_animals, [&](const Animal& animal) {
                    return i < animal.PolygonAreas.size() ? animal.PolygonAreas[i] : std::nullopt;
                }));
    return text + ".";
}

bool MethodsParagraph::HasCurve() const {
    return std::ranges::any_of(m_animals, [](const Animal& animal) { return animal.Levels.has_value(); });
}

std::string MethodsParagraph::CurveText() const {
    if (!HasCurve()) return " Whether areas levelled off with the number of fixes was not examined in this run.";
    const auto count = [&](auto&& is) { return static_cast<std::size_t>(std::ranges::count_if(m_animals, is)); };
    return " The area of the minimum convex polygon against the number of fixes, in the order of time (Odum and "
           "Kuenzler "
           "1955), came to stay within 5 % of its last value, with a tenth of the fixes to follow, for " +
           std::to_string(count([](const Animal& animal) { return animal.Levels.value_or(false); })) + " of " +
           counted(count([](const Animal& animal) { return animal.Levels.has_value(); }), "animal", "animals") + ".";
}

bool MethodsParagraph::HasIndex() const {
    return std::ranges::any_of(m_animals, [](const Animal& a) { return a.Schoener || a.SwihartSlade; });
}

std::string MethodsParagraph::IndependenceText() const {
    if (!HasIndex()) return " The independence of fixes could not be tested, and autocorrelation was not modelled.";
    const auto count = [&](auto&& is) { return std::to_string(std::ranges::count_if(m_animals, is)); };
    const std::string all = " of " + counted(m_animals.size(), "animal", "animals");
    return " Schoener's ratio (Schoener 1981) was below 1.6 or above 2.4 for " +
           count([](const Animal& a) { return a.Schoener && (*a.Schoener < 1.6 || *a.Schoener > 2.4); }) + all +
           ", and the index of Swihart and Slade (1985) above 0.6 for " +
           count([](const Animal& a) { return a.SwihartSlade && *a.SwihartSlade > 0.6; }) + all +
           ", which is read as significant autocorrelation. Autocorrelation was not modelled.";
}

std::vector<std::string> MethodsParagraph::References() const {
    const BandwidthMethod method = m_wanted.Method;
    struct Work {
        bool IsCited;
        const char* Text;
    };
    const bool index = HasIndex();
    const Work works[] = {
        {method == BandwidthMethod::kLscv,
         "Bowman, A. W. 1984. An alternative method of cross-validation for the smoothing of density estimates. "
         "Biometrika 71: 353-360. doi:10.1093/biomet/71.2.353"},
        {true,
         "Crane, M., I. Silva, B. M. Marshall and C. T. Strine 2021. Lots of movement, little progress: a review of "
         "reptile home range literature. PeerJ 9: e11742. doi:10.7717/peerj.11742"},
        {method == BandwidthMethod::kAdHoc,
         "Kie, J. G. 2013. A rule-based ad hoc method for selecting a bandwidth in kernel home-range analyses. Animal "
         "Biotelemetry 1: 13. doi:10.1186/2050-3385-1-13"},
        {true,
         "Laver, P. N. and M. J. Kelly 2008. A critical review of home range studies. Journal of Wildlife Management "
         "72: 290-298. doi:10.2193/2005-589"},
        {!m_wanted.ConvexPercentages.Values.empty(),
         "Mohr, C. O. 1947. Table of equivalent populations of North American small mammals. American Midland "
         "Naturalist 37: 223-249. doi:10.2307/2421652"},
        {HasCurve(),
         "Odum, E. P. and E. J. Kuenzler 1955. Measurement of territory and home range size in birds. Auk 72: 128-137. "
         "doi:10.2307/4081419"},
        {method == BandwidthMethod::kLscv,
         "Rudemo, M. 1982. Empirical choice of histograms and kernel density estimators. Scandinavian Journal of "
         "Statistics 9: 65-78."},
        {method == BandwidthMethod::kBcv,
         "Sain, S. R., K. A. Baggerly and D. W. Scott 1994. Cross-validation of multivariate densities. Journal of the "
         "American Statistical Association 89: 807-817. doi:10.1080/01621459.1994.10476814"},
        {index,
         "Schoener, T. W. 1981. An empirically based estimate of home range. Theoretical Population Biology 20: "
         "281-325. doi:10.1016/0040-5809(81)90049-6"},
        {method != BandwidthMethod::kManual || !m_wanted.FixedKernel,
         "Silverman, B. W. 1986. Density Estimation for Statistics and Data Analysis. Chapman and Hall, London."},
        {index,
         "Swihart, R. K. and N. A. Slade 1985. Testing for independence of observations in animal movements. Ecology "
         "66: 1176-1184. doi:10.2307/1939170"},
        {true,
         "Van Winkle, W. 1975. Comparison of several probabilistic home-range models. Journal of Wildlife Management "
         "39: 118-123. doi:10.2307/3800474"},
        {true,
         "Worton, B. J. 1989. Kernel methods for estimating the utilization distribution in home-range studies. "
         "Ecology 70: 164-168. doi:10.2307/1938423"}};
    std::vector<std::string> cited;
    for (const Work& work : works)
        if (work.IsCited) cited.emplace_back(work.Text);
    return cited;
}

}  // namespace wxl::analysis
