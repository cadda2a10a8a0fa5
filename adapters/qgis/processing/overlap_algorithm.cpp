#include "adapters/qgis/processing/overlap_algorithm.h"

#include "adapters/qgis/guide_window.h"
#include "adapters/qgis/processing/compared_fixes.h"
#include "adapters/qgis/processing/parameter_values.h"
#include "adapters/qgis/qgis_values.h"
#include "analysis/range_styles.h"
#include "comparison/compare_fixes.h"
#include "platform/checked.h"
#include "platform/runtime_error.h"
#include "platform/text.h"
#include "results_page/overlap_files.h"

#include <algorithm>
#include <array>
#include <qgsprocessingoutputs.h>
#include <qgsprocessingparameters.h>
#include <vector>

namespace wxl::qgis {
namespace {

using comparison::BandwidthRule;
using comparison::ComparedRanges;

// Values of the parameter METHOD.
enum Method { kHref, kLscv, kBcv, kManual, kProportion, kAdHoc };
constexpr std::array<BandwidthRule, 6> kRules = {BandwidthRule::kHref,       BandwidthRule::kLscv,
                                                 BandwidthRule::kBcv,        BandwidthRule::kManual,
                                                 BandwidthRule::kProportion, BandwidthRule::kAdHoc};

/// The rule as --bandwidth takes it.
std::string bandwidth_word(int method, double value) {
    switch (method) {
        case kLscv:
            return "lscv";
        case kBcv:
            return "bcv";
        case kManual:
            return platform::NumberText(value);
        case kProportion:
            return "prop:" + platform::NumberText(value);
        case kAdHoc:
            return "adhoc";
        default:
            return "href";
    }
}

std::string percents_text(const std::vector<double>& percents) {
    std::string text;
    for (const double percent : percents) text += (text.empty() ? "" : ",") + platform::NumberText(percent);
    return text;
}

std::vector<const comparison::IndexKind*> all_indices() {
    std::vector<const comparison::IndexKind*> kinds;
    for (const comparison::IndexKind& kind : comparison::index_kinds()) kinds.push_back(&kind);
    return kinds;
}

}  // namespace

QString OverlapAlgorithm::shortDescription() const {
    return QStringLiteral("Indices of overlap of the home ranges of all pairs of animals, and their common areas");
}

QString OverlapAlgorithm::shortHelpString() const {
    return QStringLiteral(
        "Estimates a utilization distribution for every animal of a point layer, all on one grid, and compares all "
        "pairs: Bhattacharyya's affinity (ba), volume of intersection (vi), the utilization distribution overlap index "
        "(udoi), the probability of meeting the other animal within a range (phr), the share of a range that lies in "
        "the other (hr), and Hellinger's distance (hd).\n\n"
        "The folder gets a table of all pairs (WXL_OVERLAP.csv), a page with heat maps and maps of the ranges, and the "
        "common areas as the layer \"overlap\" of RANGES.gpkg. The files are those of the command \"wxl overlap\". "
        "A RANGES.gpkg of an analysis in that folder keeps its layers; files of an earlier comparison are replaced "
        "only where that is chosen.\n\n"
        "A range is the cells of highest density that hold the percentage of the volume. The points must be projected. "
        "An animal without a distribution is told, and has no values.");
}

QStringList OverlapAlgorithm::tags() const {
    return QStringLiteral(
               "overlap,bhattacharyya,affinity,udoi,phr,volume of intersection,home range,territory,telemetry")
        .split(QLatin1Char(','));
}

QString OverlapAlgorithm::helpUrl() const {
    return guide_file(QStringLiteral("comparing-ranges"));
}

void OverlapAlgorithm::initAlgorithm(const QVariantMap&) {
    AddInput(QStringLiteral("Fixes (projected points)"));
    AddIdField();
    addParameter(with_help(
        new QgsProcessingParameterString(QStringLiteral("PERCENTAGES"), QStringLiteral("Percentages of the volume"),
                                         QStringLiteral("95, 50")),
        "That make the ranges; above 0 and up to 100"));
    addParameter(new QgsProcessingParameterEnum(
        QStringLiteral("METHOD"), QStringLiteral("Bandwidth"),
        {QStringLiteral("Reference bandwidth (HREF)"), QStringLiteral("LSCV (Least Squares Cross Validation)"),
         QStringLiteral("BCV (Biased Cross Validation)"), QStringLiteral("User defined"),
         QStringLiteral("Proportion of the reference bandwidth"),
         QStringLiteral("Ad hoc: the smallest that leaves a range in one piece")},
        false, kHref));
    addParameter(
        with_help(new QgsProcessingParameterNumber(QStringLiteral("BANDWIDTH"),
                                                   QStringLiteral("Bandwidth or proportion (only for these two)"),
                                                   kNumberDouble, QVariant(), true, 0.0),
                  "A bandwidth in map units, or a proportion such as 0.8"));
    addParameter(with_help(new QgsProcessingParameterDistance(QStringLiteral("CELL_SIZE"), QStringLiteral("Cell size"),
                                                              QVariant(), QStringLiteral("INPUT"), true, 0.5),
                           "Used as a whole number of map units; without one about a fifth of the smallest bandwidth"));
    addParameter(with_help(new QgsProcessingParameterBoolean(QStringLiteral("CONDITIONAL"),
                                                             QStringLiteral("Conditional indices too"), false),
                           "Of the densities within their own ranges alone"));
    addParameter(advanced(with_help(
        new QgsProcessingParameterBoolean(QStringLiteral("ADAPTIVE"), QStringLiteral("Adaptive kernel"), false),
        "Wider kernels where fixes are sparse")));
    addParameter(advanced(with_help(
        new QgsProcessingParameterBoolean(QStringLiteral("RESCALE"), QStringLiteral("Rescale to unit variance"), false),
        "Divides x and y by their standard deviations before smoothing")));
    addParameter(advanced(
        with_help(new QgsProcessingParameterBoolean(
                      QStringLiteral("OVERWRITE"), QStringLiteral("Replace the files of an earlier comparison"), false),
                  "Without it the algorithm fails where they stand")));
    AddLoad();
    AddFolder("Made when it is not there");
    addOutput(new QgsProcessingOutputFile(QStringLiteral("TABLE"), QStringLiteral("Table of all pairs")));
    addOutput(new QgsProcessingOutputHtml(QStringLiteral("PAGE"), QStringLiteral("HTML page of the results")));
    addOutput(new QgsProcessingOutputVectorLayer(QStringLiteral("COMMON"), QStringLiteral("Common areas")));
    addOutput(new QgsProcessingOutputNumber(QStringLiteral("ANIMALS"), QStringLiteral("Number of animals")));
}

bool OverlapAlgorithm::checkParameterValues(const QVariantMap& parameters, QgsProcessingContext& context,
                                            QString* message) const {
    const auto refuse = [&](const QString& text) {
        if (message != nullptr) *message = text;
        return false;
    };
    if (const QString problem = problem_of_list(
            QStringLiteral("Percentages"), parameterAsString(parameters, QStringLiteral("PERCENTAGES"), context), true);
        !problem.isEmpty())
        return refuse(problem);
    const int method = parameterAsEnum(parameters, QStringLiteral("METHOD"), context);
    if ((method == kManual || method == kProportion) &&
        !(parameterAsDouble(parameters, QStringLiteral("BANDWIDTH"), context) > 0.0))
        return refuse(QStringLiteral("Give the bandwidth or proportion, a number above 0."));
    if (method == kAdHoc && (parameterAsBoolean(parameters, QStringLiteral("ADAPTIVE"), context) ||
                             parameterAsBoolean(parameters, QStringLiteral("RESCALE"), context)))
        return refuse(QStringLiteral("The ad hoc bandwidth is for fixed kernels of coordinates as they are."));
    return QgsProcessingAlgorithm::checkParameterValues(parameters, context, message);
}

QVariantMap OverlapAlgorithm::processAlgorithm(const QVariantMap& parameters, QgsProcessingContext& context,
                                               QgsProcessingFeedback* feedback) try {
    ProcessingSession session(*feedback);
    const ReadLayer input = LayerToRead(parameters, context, *feedback);
    refuse_degrees(*input.Layer);
    const std::string name = session.Add(*input.Layer);
    const platform::Layer layer = session.Map().Layers().front();
    const QString folder = FolderOf(parameters, context);
    const auto flag = [&](const char* parameter) {
        return parameterAsBoolean(parameters, QLatin1String(parameter), context);
    };
    const results_page::OverlapFiles files(session.Services(), FromQString(folder));
    if (!flag("OVERWRITE")) files.RefuseStanding();

    comparison::FixComparison wanted;
    const int method = parameterAsEnum(parameters, QStringLiteral("METHOD"), context);
    wanted.Densities.Rule = kRules.at(static_cast<std::size_t>(method));
    wanted.Densities.Value = parameterAsDouble(parameters, QStringLiteral("BANDWIDTH"), context);
    wanted.Densities.Adaptive = flag("ADAPTIVE");
    wanted.Densities.Rescale = flag("RESCALE");
    if (is_given(parameters, "CELL_SIZE"))
        wanted.CellSize =
            platform::round_half_even(parameterAsDouble(parameters, QStringLiteral("CELL_SIZE"), context), 0);
    wanted.Densities.AdHoc.CellSize = wanted.CellSize;
    wanted.Percents = percentages_of(parameterAsString(parameters, QStringLiteral("PERCENTAGES"), context));
    const std::string idField = FromQString(parameterAsString(parameters, QStringLiteral("ID_FIELD"), context));
    const std::vector<comparison::NamedFixes> animals = animals_of(layer, idField, input.SelectedOnly, *feedback);

    results_page::OverlapRun run;
    run.Indices = all_indices();
    run.Title = name;
    run.Start = session.Services().Clock->Now();
    const std::string bandwidth = bandwidth_word(method, wanted.Densities.Value);
    const std::string source = layer.Source.empty() ? name : layer.Source;
    run.Settings = {{"Input", source},
                    {"Animal ID field", idField},
                    {"Fixes", input.SelectedOnly ? "the selected ones" : ""},
                    {"Bandwidth", bandwidth},
                    {"Kernel", wanted.Densities.Adaptive ? "bivariate normal, adaptive" : "bivariate normal, fixed"},
                    {"Unit variance", wanted.Densities.Rescale ? "yes" : ""},
                    {"Percentages", percents_text(wanted.Percents)},
                    {"Conditional indices", flag("CONDITIONAL") ? "yes" : "no"},
                    {"Divided by their volumes", "no"}};
    run.Words = {"wxl", "overlap", source, "--id-field", idField};
    const auto word = [&](const char* option, const std::string& value, const char* usual) {
        if (value != usual) run.Words.insert(run.Words.end(), {option, value});
    };
    word("--bandwidth", bandwidth, "href");
    if (wanted.Densities.Adaptive) run.Words.emplace_back("--adaptive");
    if (wanted.Densities.Rescale) run.Words.emplace_back("--rescale");
    word("--cell-size", wanted.CellSize > 0.0 ? platform::NumberText(wanted.CellSize) : "", "");
    word("--percent", percents_text(wanted.Percents), "95");
    if (flag("CONDITIONAL")) run.Words.emplace_back("--conditional");
    word("--out", FromQString(folder), "");

    const auto progress = [&](double share, double from, double width) {
        feedback->setProgress(100.0 * (from + share * width));
        session.Host().Yield();
        if (feedback->isCanceled()) throw QgsProcessingException(QStringLiteral("Cancelled; nothing was written."));
    };
    ComparedRanges ranges = comparison::ranges_of_fixes(
        animals, wanted,
        {.Progress = [&](double share, std::string_view) { progress(share, 0.0, 0.5); },
         .Problem = [&](const std::string& line) { feedback->pushWarning(ToQString(line)); }});
    run.Warnings = comparison::volume_warnings(ranges);
    for (const std::string& warning : run.Warnings) feedback->pushWarning(ToQString(warning));
    ranges.Pairs = comparison::overlaps(
        ranges.Densities,
        {.Conditional = flag("CONDITIONAL"), .AllPairs = ranges.Animals.size() <= comparison::kAllPairs},
        [&](double share) { progress(share, 0.5, 0.4); });
    const bool any = std::any_of(ranges.Densities.Animals.begin(), ranges.Densities.Animals.end(),
                                 [](const comparison::TiledDensity& density) { return density.IsAlive(); });
    if (!any) throw QgsProcessingException(QStringLiteral("No animal has a distribution; the log above says why."));
    run.Ranges = &ranges;
    run.Units.Reference = layer.Feature->FeatureClass()->Reference();
    const auto written = files.Write(run, [&](double share) { progress(share, 0.9, 0.1); });
    for (const std::string& warning : written.Warnings) feedback->pushWarning(ToQString(warning));
    const QString common = written.Package.empty()
                               ? QString()
                               : ToQString(written.Package.string()) + QStringLiteral("|layername=overlap");
    if (!common.isEmpty() && context.project() != nullptr && flag("LOAD")) {
        QgsProcessingContext::LayerDetails details(QStringLiteral("Common areas"), context.project());
        details.setPostProcessor(new StyledOnLoad(analysis::overlap_style()));
        context.addLayerToLoadOnCompletion(common, details);
    }
    return {{QStringLiteral("OUTPUT"), folder},
            {QStringLiteral("TABLE"), folder + QStringLiteral("/WXL_OVERLAP.csv")},
            {QStringLiteral("PAGE"), ToQString(written.Page.string())},
            {QStringLiteral("COMMON"), common},
            {QStringLiteral("ANIMALS"), static_cast<int>(animals.size())}};
} catch (const platform::RuntimeError& error) {
    throw QgsProcessingException(ToQString(error.Description));
}

}  // namespace wxl::qgis
