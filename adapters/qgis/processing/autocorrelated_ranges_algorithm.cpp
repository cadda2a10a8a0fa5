#include "adapters/qgis/processing/autocorrelated_ranges_algorithm.h"

#include "adapters/qgis/guide_window.h"
#include "adapters/qgis/processing/parameter_values.h"
#include "adapters/qgis/processing/result_loading.h"
#include "adapters/qgis/qgis_layers.h"
#include "adapters/qgis/qgis_values.h"
#include "adapters/qgis/result_catalogue.h"
#include "platform/runtime_error.h"
#include "platform/text.h"
#include "results_page/range_page.h"

#include <algorithm>
#include <qgsprocessingoutputs.h>
#include <qgsprocessingparameters.h>
#include <qgsrasterlayer.h>

namespace wxl::qgis {
namespace {

using akde::RangeExtent;
using akde::RangeSettings;
using movement_models::Estimation;

// Values of the parameters EXTENT_MODE and METHOD.
enum ExtentMode { kOwn, kFull, kReference };
constexpr Estimation kMethods[] = {Estimation::kPhreml, Estimation::kReml, Estimation::kMl};

/// What a run tells goes to the algorithm's log and bar.
class FeedbackListener final : public akde::IListener {
public:
    FeedbackListener(QgsProcessingFeedback& feedback, FeedbackHost& host) : m_feedback(feedback), m_host(host) {}

    /// Animals that are done, of all.
    void SetDone(std::size_t done, std::size_t all) {
        m_done = static_cast<double>(done);
        m_all = static_cast<double>(std::max<std::size_t>(all, 1));
        Progress(0.0, m_what);
    }

    void Progress(double share, std::string_view what) override {
        if (what != m_what) m_feedback.setProgressText(ToQString(std::string(what)));
        m_what = what;
        m_feedback.setProgress(100.0 * (m_done + std::min(share, 0.99)) / m_all);
        m_host.Yield();
    }
    void EndProgress() override {}
    void Note(std::string_view line) override { m_feedback.pushInfo(ToQString(std::string(line))); }
    void Problem(std::string_view line) override { m_feedback.pushWarning(ToQString(std::string(line))); }
    bool IsStopped() const override { return m_feedback.isCanceled(); }

private:
    QgsProcessingFeedback& m_feedback;
    FeedbackHost& m_host;
    std::string m_what;
    double m_done = 0.0;
    double m_all = 1.0;
};

/// What a run wrote.
struct WrittenRanges {
    QStringList Rasters;
    QStringList Isopleths;
    ResultCatalogue Catalogue;

    void Add(const akde::RangeRecord& record) {
        Catalogue.Add(record);
        for (const std::string& file : record.Files) {
            const QString path = ToQString(file);
            (path.endsWith(QStringLiteral(".shp")) ? Isopleths : Rasters) << path;
        }
    }
};

std::vector<double> percentages_of(const QString& text) {
    return analysis::typed_numbers(FromQString(text)).Values;
}

}  // namespace

QString AutocorrelatedRangesAlgorithm::shortDescription() const {
    return QStringLiteral("Home range with limits of every animal whose fixes depend on each other");
}

QString AutocorrelatedRangesAlgorithm::shortHelpString() const {
    return QStringLiteral(
        "Home ranges of animals whose fixes depend on each other, as those of GPS collars do. For every animal eight "
        "movement models are fitted by their exact likelihood; the best advises the bandwidth matrix of the kernel, "
        "and tells how many independent fixes the record is worth. Areas are corrected for the width of the kernel and "
        "have 95 % limits.\n\n"
        "For every animal there is a raster of the density, and a shapefile with an outline for every percentage; its "
        "field BOUND says which: est (the estimate), low or high (its limits). The folder also gets a summary table "
        "and, where asked for, an HTML page with maps and variograms, and a GeoPackage of all ranges. The files are "
        "those of the command \"wxl akde\".\n\n"
        "The points must be projected: distances in degrees mean nothing. An animal that is not shown to be resident "
        "has a warning in the log: look at its variogram before using the area.\n\n"
        "Cancel stops after the present animal; what was done is kept.");
}

QStringList AutocorrelatedRangesAlgorithm::tags() const {
    return QStringLiteral(
               "akde,autocorrelation,home range,movement model,utilization distribution,isopleth,telemetry,"
               "effective sample size,confidence limits,variogram")
        .split(QLatin1Char(','));
}

QString AutocorrelatedRangesAlgorithm::helpUrl() const {
    return guide_file(QStringLiteral("which-estimator"));
}

void AutocorrelatedRangesAlgorithm::initAlgorithm(const QVariantMap&) {
    AddInput(QStringLiteral("Fixes (projected points)"));
    const auto field = [&](const char* name, const char* title, bool optional, const char* help) {
        addParameter(
            with_help(new QgsProcessingParameterField(QLatin1String(name), QLatin1String(title), QVariant(),
                                                      QStringLiteral("INPUT"), kFieldOfAnyType, false, optional),
                      help));
    };
    field("ID_FIELD", "Animal ID field", false, "The field that names the animal of each fix");
    field("TIME_FIELD", "Field of date and time", false, "A text, a date, or seconds");
    field("TIME_OF_DAY_FIELD", "Field of the time of day (only where the other holds the date alone)", true,
          "As \"wxl import\" writes them: Date and Time1");
    AddModelParameters();
    AddRasterParameters();
    AddRunParameters();
    AddRunOutputs(QStringLiteral("SUMMARY"), QStringLiteral("Summary"));
}

void AutocorrelatedRangesAlgorithm::AddModelParameters() {
    addParameter(with_help(
        new QgsProcessingParameterBoolean(QStringLiteral("OPTIMAL_WEIGHTS"), QStringLiteral("Optimal weights"), false),
        "Fixes close in time count less: for uneven intervals, such as nights off"));
    addParameter(
        with_help(new QgsProcessingParameterString(QStringLiteral("ISOPLETHS"),
                                                   QStringLiteral("Isopleths (percentages)"), QStringLiteral("95, 50")),
                  "Above 0 and below 100"));
    addParameter(
        new QgsProcessingParameterBoolean(QStringLiteral("LINES"), QStringLiteral("Isopleths as lines too"), false));
    addParameter(advanced(new QgsProcessingParameterEnum(
        QStringLiteral("METHOD"), QStringLiteral("Estimation of the models"),
        {QStringLiteral("pHREML (best for short tracks)"), QStringLiteral("REML"), QStringLiteral("ML")}, false, 0)));
    addParameter(
        advanced(with_help(new QgsProcessingParameterString(QStringLiteral("MODEL"), QStringLiteral("Given model"),
                                                            QVariant(), false, true),
                           "Taken as it is, with its time scales in seconds: OU:86400, OUF:isotropic:86400,3600. "
                           "Without one the best is chosen")));
}

void AutocorrelatedRangesAlgorithm::AddRasterParameters() {
    addParameter(with_help(new QgsProcessingParameterDistance(QStringLiteral("CELL_SIZE"),
                                                              QStringLiteral("Cell size (not with a reference raster)"),
                                                              QVariant(), QStringLiteral("INPUT"), true, 0.0),
                           "In map units; without one, cells that suit the kernel"));
    addParameter(
        new QgsProcessingParameterEnum(QStringLiteral("EXTENT_MODE"), QStringLiteral("Extent of the rasters"),
                                       {QStringLiteral("Each animal's own"), QStringLiteral("One for all animals"),
                                        QStringLiteral("As a reference raster")},
                                       false, kOwn));
    addParameter(with_help(new QgsProcessingParameterDistance(
                               QStringLiteral("BUFFER"), QStringLiteral("Buffer (only for the extent of all animals)"),
                               QVariant(), QStringLiteral("INPUT"), true, 0.0),
                           "Without one, as far as the widest kernel reaches"));
    AddRasterFiles(QStringLiteral("Raster name prefix"));
}

void AutocorrelatedRangesAlgorithm::AddRunParameters() {
    addParameter(with_help(new QgsProcessingParameterBoolean(
                               QStringLiteral("HTML"), QStringLiteral("Write an HTML page of the results"), false),
                           "Puts a page with maps, models and variograms of all animals into the output folder"));
    AddPackage();
    AddLoad();
}

bool AutocorrelatedRangesAlgorithm::checkParameterValues(const QVariantMap& parameters, QgsProcessingContext& context,
                                                         QString* message) const {
    const auto refuse = [&](const QString& text) {
        if (message) *message = text;
        return false;
    };
    const auto text = [&](const char* name) { return parameterAsString(parameters, QLatin1String(name), context); };
    if (parameterAsEnum(parameters, QStringLiteral("EXTENT_MODE"), context) == kReference &&
        !is_given(parameters, "REFERENCE"))
        return refuse(QStringLiteral("Choose the reference raster."));
    if (const QString problem = problem_of_list(QStringLiteral("Isopleths"), text("ISOPLETHS"), true);
        !problem.isEmpty())
        return refuse(problem);
    const std::vector<double> percentages = percentages_of(text("ISOPLETHS"));
    if (std::find(percentages.begin(), percentages.end(), 100.0) != percentages.end())
        return refuse(QStringLiteral("Isopleths: 100 % has no outline."));
    const QString model = text("MODEL").trimmed();
    if (!model.isEmpty() && !akde::parse_given_model(FromQString(model)))
        return refuse(QStringLiteral("The given model \"%1\" is none like IID, OU:TAU, OUf:TAU or OUF:TAU1,TAU2 with "
                                     "time scales in seconds, TAU2 below TAU1.")
                          .arg(model));
    return QgsProcessingAlgorithm::checkParameterValues(parameters, context, message);
}

void AutocorrelatedRangesAlgorithm::TakeExtent(const QVariantMap& parameters, QgsProcessingContext& context,
                                               RangeSettings& settings) const {
    const auto distance = [&](const char* name) {
        return is_given(parameters, name) ? std::optional(parameterAsDouble(parameters, QLatin1String(name), context))
                                          : std::nullopt;
    };
    if (const auto size = distance("CELL_SIZE"); size && *size > 0.0) settings.CellSize = size;
    const int mode = parameterAsEnum(parameters, QStringLiteral("EXTENT_MODE"), context);
    if (mode == kFull) {
        settings.Extent = RangeExtent::kFull;
        settings.Buffer = distance("BUFFER");
    }
    if (mode != kReference) return;
    QgsRasterLayer* raster = parameterAsRasterLayer(parameters, QStringLiteral("REFERENCE"), context);
    if (!raster) throw QgsProcessingException(invalidRasterError(parameters, QStringLiteral("REFERENCE")));
    settings.Extent = RangeExtent::kReference;
    settings.ReferenceName = FromQString(raster->source());
    settings.Reference = FromQgsLayer(*raster).Raster->Geometry();
}

RangeSettings AutocorrelatedRangesAlgorithm::SettingsOf(const QVariantMap& parameters,
                                                        QgsProcessingContext& context) const {
    const auto text = [&](const char* name) {
        return FromQString(parameterAsString(parameters, QLatin1String(name), context));
    };
    RangeSettings settings;
    settings.Fields = {text("ID_FIELD"), text("TIME_FIELD")};
    if (is_given(parameters, "TIME_OF_DAY_FIELD")) settings.Fields.Time += "," + text("TIME_OF_DAY_FIELD");
    settings.Fit.Method = kMethods[parameterAsEnum(parameters, QStringLiteral("METHOD"), context)];
    if (is_given(parameters, "MODEL"))
        settings.Fit.Given = akde::parse_given_model(std::string(platform::Trim(text("MODEL"))));
    settings.Prefix = text("PREFIX");
    settings.Scaling = parameterAsDouble(parameters, QStringLiteral("SCALING"), context);
    settings.RasterFormat = RasterFormatOf(parameters, context);
    settings.Percentages = percentages_of(parameterAsString(parameters, QStringLiteral("ISOPLETHS"), context));
    settings.Optimal = parameterAsBoolean(parameters, QStringLiteral("OPTIMAL_WEIGHTS"), context);
    settings.Lines = parameterAsBoolean(parameters, QStringLiteral("LINES"), context);
    settings.GeoPackage = WantsPackage(parameters, context);
    TakeExtent(parameters, context, settings);
    return settings;
}

QVariantMap AutocorrelatedRangesAlgorithm::processAlgorithm(const QVariantMap& parameters,
                                                            QgsProcessingContext& context,
                                                            QgsProcessingFeedback* feedback) try {
    ProcessingSession session(*feedback);
    const ReadLayer input = LayerToRead(parameters, context, *feedback);
    refuse_degrees(*input.Layer);
    RangeSettings settings = SettingsOf(parameters, context);
    settings.LayerName = session.Add(*input.Layer);
    const platform::Layer layer = session.Map().Layers().front();
    settings.Source = layer.Source;
    settings.SelectedOnly = input.SelectedOnly;
    const QString folder = FolderOf(parameters, context);
    settings.Folder = FromQString(folder);
    const akde::TimedAnimals animals = akde::read_timed_animals(*layer.Feature, settings.Fields, input.SelectedOnly,
                                                                "The layer \"" + settings.LayerName + "\"");

    FeedbackListener listener(*feedback, session.Host());
    WrittenRanges written;
    written.Catalogue.Begin(settings.LayerName, QStringLiteral("AKDE"), animals.Reference);
    results_page::RangePage page(session.Services(), settings, animals.Reference);
    const bool html = parameterAsBoolean(parameters, QStringLiteral("HTML"), context);
    std::size_t done = 0;
    const akde::RangeOutcome outcome =
        akde::RangeRun(settings, session.Services(), listener).Run(animals, [&](const akde::RangeRecord& record) {
            written.Add(record);
            if (html) page.Add(record);
            listener.SetDone(++done, animals.Animals.size());
        });
    const std::filesystem::path written_page = html ? page.Write(outcome) : std::filesystem::path();
    if (outcome.Failed > 0)
        feedback->reportError(QStringLiteral("%1 of %2 distributions could not be computed; the log above says why.")
                                  .arg(outcome.Failed)
                                  .arg(outcome.Done));
    if (outcome.Done > 0 && outcome.Failed == outcome.Done)
        throw QgsProcessingException(
            QStringLiteral("None of the %1 distributions could be computed; the log above says why.")
                .arg(outcome.Done));
    if (outcome.NotWritten)
        throw QgsProcessingException(QStringLiteral("Not all could be written; the log above says what and why."));
    if (context.project() != nullptr && parameterAsBoolean(parameters, QStringLiteral("LOAD"), context))
        load_on_completion(written.Catalogue, context);
    return {{QStringLiteral("OUTPUT"), folder},
            {QStringLiteral("SUMMARY"), ToQString(outcome.Summary.string())},
            {QStringLiteral("PAGE"), ToQString(written_page.string())},
            {QStringLiteral("PACKAGE"), ToQString(outcome.Package.lexically_normal().string())},
            {QStringLiteral("RASTERS"), written.Rasters},
            {QStringLiteral("ISOPLETHS"), written.Isopleths},
            {QStringLiteral("DISTRIBUTIONS"), static_cast<int>(outcome.Done)},
            {QStringLiteral("FAILED"), static_cast<int>(outcome.Failed)}};
} catch (const platform::RuntimeError& error) {
    throw QgsProcessingException(ToQString(error.Description));
}

}  // namespace wxl::qgis
