#include "adapters/qgis/processing/kernel_density_algorithm.h"

#include "adapters/qgis/processing/parameter_values.h"
#include "adapters/qgis/processing/result_loading.h"
#include "adapters/qgis/qgis_values.h"
#include "adapters/qgis/result_catalogue.h"
#include "analysis/output_names.h"
#include "kde_tool/form_settings.h"
#include "kde_tool/frmKDE.h"
#include "platform/text.h"
#include "results_page/results_page.h"

#include <qgsprocessingoutputs.h>
#include <qgsprocessingparameters.h>
#include <qgsrasterlayer.h>

namespace wxl::qgis {
namespace {

using analysis::RunOutcome;
using kde_tool::frmKDE;

// Values of the parameters METHOD and EXTENT_MODE.
enum Method { kHref, kLscv, kBcv, kBandwidths, kProportions, kAdHoc };
enum ExtentMode { kFull, kMinimum, kReference };

/// What a run wrote, as it tells it.
class WrittenFiles final : public analysis::IRunObserver {
public:
    void RunBegins(const analysis::RunFrame& frame, const analysis::GroupedFixes&) override { Catalogue.Begin(frame); }
    void AnimalDone(const analysis::AnimalRecord& record) override {
        Catalogue.Add(record);
        ++Distributions;
        if (record.Status != 0) ++Failed;
        for (const std::string& file : record.Files) {
            const QString path = ToQString(file);
            (path.endsWith(QStringLiteral(".shp")) ? Isopleths : Rasters) << path;
        }
    }
    void RunEnds(RunOutcome) override {}

    int Distributions = 0;
    int Failed = 0;
    QStringList Rasters;
    QStringList Isopleths;
    ResultCatalogue Catalogue;
};

void select_field(frmKDE& form, const QString& field) {
    if (!form.cmbUIDFLD.Select(FromQString(field)))
        throw QgsProcessingException(QStringLiteral("The layer has no field \"%1\".").arg(field));
    form.cmbUIDFLD_Click();
}

QString report_of(const QString& folder) {
    return ToQString(analysis::file_in_folder(FromQString(folder), analysis::kReportFile).lexically_normal().string());
}

}  // namespace

QString KernelDensityAlgorithm::shortDescription() const {
    return QStringLiteral("Utilization distribution and isopleths of every animal of a point layer");
}

QString KernelDensityAlgorithm::shortHelpString() const {
    return QStringLiteral(
        "Estimates a utilization distribution for every animal of a point layer by a bivariate normal kernel, fixed or "
        "adaptive, and writes it as a raster into the output folder, with isopleths as shapefiles where asked for. The "
        "folder also gets a report, a summary table, a record of the settings and, where asked for, an HTML page with "
        "maps, and a GeoPackage of all ranges. The files are those of the analysis dialog and of the command \"wxl "
        "kde\".\n\n"
        "The points must be projected: distances in degrees mean nothing.\n\n"
        "Bandwidth: the reference rule, least squares (LSCV) or biased (BCV) cross-validation, your own bandwidths in "
        "map units, proportions of the reference bandwidth, or the smallest proportion that leaves a range in one "
        "piece "
        "(ad hoc, after Kie 2013).\n\n"
        "Rasters are named after the prefix and the animal: its number, or 1, 2, 3 ... where the ID is text. A raster "
        "that stands in the folder is not replaced: choose a new folder for every run.\n\n"
        "Cancel stops after the present animal; what was done is kept.");
}

QStringList KernelDensityAlgorithm::tags() const {
    return QStringLiteral("kernel,density,kde,home range,utilization distribution,isopleth,telemetry,lscv,bcv")
        .split(QLatin1Char(','));
}

void KernelDensityAlgorithm::initAlgorithm(const QVariantMap&) {
    AddInput(QStringLiteral("Fixes (projected points)"));
    AddIdField();
    AddRasterParameters();
    AddBandwidthParameters();
    AddIsoplethParameters();
    AddRunParameters();
    AddRunOutputs(QStringLiteral("REPORT"), QStringLiteral("Report"));
}

void KernelDensityAlgorithm::AddBandwidthParameters() {
    addParameter(new QgsProcessingParameterEnum(
        QStringLiteral("METHOD"), QStringLiteral("Bandwidth"),
        {QStringLiteral("Reference bandwidth (HREF)"), QStringLiteral("LSCV (Least Squares Cross Validation)"),
         QStringLiteral("BCV (Biased Cross Validation)"), QStringLiteral("User defined"),
         QStringLiteral("Proportions of the reference bandwidth"),
         QStringLiteral("Ad hoc: the smallest that leaves a range in one piece")},
        false, kHref));
    addParameter(
        with_help(new QgsProcessingParameterString(QStringLiteral("BANDWIDTHS"),
                                                   QStringLiteral("Bandwidths or proportions (only for these two)"),
                                                   QVariant(), false, true),
                  "For \"User defined\" bandwidths in map units, for \"Proportions\" numbers such as 0.5, 1; several "
                  "separated by "
                  "commas. Not used with the other choices"));
    addParameter(with_help(
        new QgsProcessingParameterBoolean(QStringLiteral("ADAPTIVE"), QStringLiteral("Adaptive kernel"), false),
        "Wider kernels where fixes are sparse"));
    addParameter(advanced(
        with_help(new QgsProcessingParameterString(QStringLiteral("REACH"), QStringLiteral("Reach of the kernels"),
                                                   QVariant(), false, true),
                  "In bandwidths; four without it. \"whole\" reaches as far as the widest kernel does")));
    addParameter(advanced(with_help(
        new QgsProcessingParameterBoolean(QStringLiteral("RESCALE"), QStringLiteral("Rescale to unit variance"), false),
        "Divides x and y by their standard deviations before smoothing")));
}

void KernelDensityAlgorithm::AddRasterParameters() {
    addParameter(with_help(new QgsProcessingParameterDistance(QStringLiteral("CELL_SIZE"),
                                                              QStringLiteral("Cell size (not with a reference raster)"),
                                                              QVariant(), QStringLiteral("INPUT"), true, 0.5),
                           "Used as a whole number of map units; not needed with a reference raster"));
    addParameter(new QgsProcessingParameterEnum(
        QStringLiteral("EXTENT_MODE"), QStringLiteral("Extent of the rasters"),
        {QStringLiteral("All fixes of the layer and a buffer"),
         QStringLiteral("Each animal's fixes and four bandwidths"), QStringLiteral("As a reference raster")},
        false, kFull));
    addParameter(with_help(new QgsProcessingParameterDistance(
                               QStringLiteral("BUFFER"), QStringLiteral("Buffer (only for the extent of all fixes)"),
                               QVariant(), QStringLiteral("INPUT"), true, 0.0),
                           "Without one, a buffer that suits the bandwidths is used"));
    AddRasterFiles(QStringLiteral("Raster name prefix (at most 6 characters)"));
}

void KernelDensityAlgorithm::AddIsoplethParameters() {
    addParameter(new QgsProcessingParameterString(QStringLiteral("ISOPLETHS"),
                                                  QStringLiteral("Isopleths (percentages; only with a kind below or "
                                                                 "the GeoPackage)"),
                                                  QStringLiteral("95, 90, 50"), false, true));
    addParameter(
        new QgsProcessingParameterBoolean(QStringLiteral("LINES"), QStringLiteral("Isopleths as lines"), false));
    addParameter(
        new QgsProcessingParameterBoolean(QStringLiteral("POLYGONS"), QStringLiteral("Isopleths as polygons"), false));
    addParameter(with_help(new QgsProcessingParameterBoolean(QStringLiteral("DONUTS"),
                                                             QStringLiteral("Isopleths as donut polygons"), false),
                           "Rings between consecutive isopleths; give the percentages in increasing order"));
}

void KernelDensityAlgorithm::AddRunParameters() {
    addParameter(with_help(new QgsProcessingParameterBoolean(
                               QStringLiteral("HTML"), QStringLiteral("Write an HTML page of the results"), false),
                           "Puts a page with tables and pictures of all animals into the output folder"));
    AddPackage();
    addParameter(advanced(new QgsProcessingParameterBoolean(
        QStringLiteral("INDEPENDENCE"), QStringLiteral("Put the indices of independence into the report"), false)));
    addParameter(advanced(new QgsProcessingParameterBoolean(
        QStringLiteral("VERBOSE"), QStringLiteral("Put the search profiles into the report"), false)));
    addParameter(
        advanced(with_help(new QgsProcessingParameterBoolean(
                               QStringLiteral("USE_RECOMMENDED_BUFFER"),
                               QStringLiteral("Use the recommended buffer where the given one is too small"), true),
                           "The answer to the question that the dialog asks")));
    addParameter(advanced(with_help(
        new QgsProcessingParameterBoolean(QStringLiteral("ACCEPT_OVERLAPS"),
                                          QStringLiteral("Go on when fixes of an animal share a location"), true),
        "The answer to the question that the dialog asks; without it the algorithm fails then")));
    AddLoad();
}

bool KernelDensityAlgorithm::checkParameterValues(const QVariantMap& parameters, QgsProcessingContext& context,
                                                  QString* message) const {
    const auto refuse = [&](const QString& text) {
        if (message) *message = text;
        return false;
    };
    const int extent = parameterAsEnum(parameters, QStringLiteral("EXTENT_MODE"), context);
    if (extent == kReference && !is_given(parameters, "REFERENCE"))
        return refuse(QStringLiteral("Choose the reference raster."));
    if (extent != kReference && !is_given(parameters, "CELL_SIZE"))
        return refuse(QStringLiteral("Give the cell size in map units."));
    const int method = parameterAsEnum(parameters, QStringLiteral("METHOD"), context);
    if (method == kBandwidths || method == kProportions)
        if (const QString text =
                problem_of_list(QStringLiteral("Bandwidths"),
                                parameterAsString(parameters, QStringLiteral("BANDWIDTHS"), context), false);
            !text.isEmpty())
            return refuse(text);
    if (method == kAdHoc && (parameterAsBoolean(parameters, QStringLiteral("ADAPTIVE"), context) ||
                             parameterAsBoolean(parameters, QStringLiteral("RESCALE"), context)))
        return refuse(QStringLiteral("The ad hoc bandwidth is for fixed kernels of coordinates as they are."));
    if (WantsIsopleths(parameters, context))
        if (const QString text = problem_of_list(
                QStringLiteral("Isopleths"), parameterAsString(parameters, QStringLiteral("ISOPLETHS"), context), true);
            !text.isEmpty())
            return refuse(text);
    if (!analysis::reach_of(FromQString(parameterAsString(parameters, QStringLiteral("REACH"), context))))
        return refuse(QStringLiteral("The reach of the kernels is a number of bandwidths above 0, or whole."));
    if (parameterAsString(parameters, QStringLiteral("PREFIX"), context).size() > 6)
        return refuse(QStringLiteral("The prefix has more than 6 characters."));
    return QgsProcessingAlgorithm::checkParameterValues(parameters, context, message);
}

/// A reference raster joins the map.
analysis::ExtentChoice KernelDensityAlgorithm::Extent(const QVariantMap& parameters, QgsProcessingContext& context,
                                                      ProcessingSession& session) const {
    const int mode = parameterAsEnum(parameters, QStringLiteral("EXTENT_MODE"), context);
    if (mode == kMinimum) return {analysis::ExtentMode::kMinimum};
    if (mode == kReference) {
        QgsRasterLayer* raster = parameterAsRasterLayer(parameters, QStringLiteral("REFERENCE"), context);
        if (!raster) throw QgsProcessingException(invalidRasterError(parameters, QStringLiteral("REFERENCE")));
        return {analysis::ExtentMode::kReference, std::nullopt, session.Add(*raster)};
    }
    if (!is_given(parameters, "BUFFER")) return {};
    return {analysis::ExtentMode::kFull,
            analysis::typed_number(parameterAsDouble(parameters, QStringLiteral("BUFFER"), context))};
}

void KernelDensityAlgorithm::TakeKernel(const QVariantMap& parameters, QgsProcessingContext& context,
                                        analysis::Settings& settings) const {
    const auto text = [&](const char* name) {
        return FromQString(parameterAsString(parameters, QLatin1String(name), context));
    };
    switch (parameterAsEnum(parameters, QStringLiteral("METHOD"), context)) {
        case kLscv:
            settings.Method = analysis::BandwidthMethod::kLscv;
            break;
        case kBcv:
            settings.Method = analysis::BandwidthMethod::kBcv;
            break;
        case kBandwidths:
            settings.Method = analysis::BandwidthMethod::kManual;
            settings.Bandwidths = analysis::typed_numbers(text("BANDWIDTHS"));
            break;
        case kProportions:
            settings.Method = analysis::BandwidthMethod::kProportion;
            settings.Proportions = analysis::typed_numbers(text("BANDWIDTHS"));
            break;
        case kAdHoc:
            settings.Method = analysis::BandwidthMethod::kAdHoc;
            break;
        default:
            settings.Method = analysis::BandwidthMethod::kHref;
            break;
    }
    settings.FixedKernel = !parameterAsBoolean(parameters, QStringLiteral("ADAPTIVE"), context);
    settings.Rescale = parameterAsBoolean(parameters, QStringLiteral("RESCALE"), context);
    settings.KernelReach = analysis::reach_of(text("REACH")).value_or(analysis::Reach{});
}

void KernelDensityAlgorithm::TakeOutput(const QVariantMap& parameters, QgsProcessingContext& context,
                                        analysis::Settings& settings) const {
    if (is_given(parameters, "CELL_SIZE"))
        settings.Cells = analysis::cell_size_of(
            platform::NumberText(parameterAsDouble(parameters, QStringLiteral("CELL_SIZE"), context)));
    settings.Prefix = FromQString(parameterAsString(parameters, QStringLiteral("PREFIX"), context));
    settings.ScalingFactor = analysis::typed_number(parameterAsDouble(parameters, QStringLiteral("SCALING"), context));
    settings.Verbose = parameterAsBoolean(parameters, QStringLiteral("VERBOSE"), context);
    settings.Html = parameterAsBoolean(parameters, QStringLiteral("HTML"), context);
    settings.GeoPackage = WantsPackage(parameters, context);
    settings.RasterFormat = RasterFormatOf(parameters, context);
}

bool KernelDensityAlgorithm::WantsIsopleths(const QVariantMap& parameters, QgsProcessingContext& context) const {
    const auto flag = [&](const char* name) { return parameterAsBoolean(parameters, QLatin1String(name), context); };
    const bool named = !parameterAsString(parameters, QStringLiteral("ISOPLETHS"), context).trimmed().isEmpty();
    return flag("LINES") || flag("POLYGONS") || flag("DONUTS") || (named && WantsPackage(parameters, context));
}

void KernelDensityAlgorithm::TakeIsopleths(const QVariantMap& parameters, QgsProcessingContext& context,
                                           analysis::Settings& settings) const {
    settings.Lines = parameterAsBoolean(parameters, QStringLiteral("LINES"), context);
    settings.Polygons = parameterAsBoolean(parameters, QStringLiteral("POLYGONS"), context);
    settings.Donuts = parameterAsBoolean(parameters, QStringLiteral("DONUTS"), context);
    settings.Isopleths = WantsIsopleths(parameters, context);
    if (settings.Isopleths)
        settings.Percentages =
            analysis::typed_numbers(FromQString(parameterAsString(parameters, QStringLiteral("ISOPLETHS"), context)));
}

QVariantMap KernelDensityAlgorithm::processAlgorithm(const QVariantMap& parameters, QgsProcessingContext& context,
                                                     QgsProcessingFeedback* feedback) {
    ProcessingSession session(*feedback);
    const ReadLayer input = LayerToRead(parameters, context, *feedback);
    refuse_degrees(*input.Layer);
    session.Add(*input.Layer);
    const analysis::ExtentChoice extent = Extent(parameters, context, session);
    const QString folder = FolderOf(parameters, context);
    const auto answer = [&](const char* name) {
        return parameterAsBoolean(parameters, QLatin1String(name), context) ? platform::Answer::kYes
                                                                            : platform::Answer::kNo;
    };
    session.Messages().WillAnswer(platform::Topic::kBuffer, answer("USE_RECOMMENDED_BUFFER"));
    session.Messages().WillAnswer(platform::Topic::kOverlap, answer("ACCEPT_OVERLAPS"));
    session.Messages().WillAnswer(platform::Topic::kStop, platform::Answer::kYes);

    frmKDE form(session.Services(), session.Geodata());
    WrittenFiles written;
    form.Form_Load();
    results_page::ResultsPage page(session.Services());
    form.AddObserver(written);
    form.AddObserver(page);
    select_field(form, parameterAsString(parameters, QStringLiteral("ID_FIELD"), context));
    analysis::Settings settings = kde_tool::settings_of(form);
    settings.OutputFolder = FromQString(folder);
    TakeKernel(parameters, context, settings);
    TakeOutput(parameters, context, settings);
    TakeIsopleths(parameters, context, settings);
    settings.Mode = extent.Mode;
    settings.ReferenceName = extent.ReferenceName;
    kde_tool::fill(form, settings);
    if (input.SelectedOnly) {
        form.chkUseSel.Value = 1;
        form.chkUseSel_Click();
    }
    kde_tool::turn_pages(form, parameterAsBoolean(parameters, QStringLiteral("INDEPENDENCE"), context), extent.Buffer);
    session.Host().Watch(&form.PBar, &form.txtStatus);
    session.Host().SetOnCancel([&form] {
        if (form.Running()) form.btnExit_Click();
    });
    const std::string buffer = form.txtBuffer.Text;
    if (form.optFull.Value) feedback->pushInfo(QStringLiteral("Buffer: %1").arg(ToQString(buffer)));
    if (!feedback->isCanceled()) form.btnOK_Click();
    session.Host().Watch(nullptr, nullptr);
    if (form.optFull.Value && form.txtBuffer.Text != buffer)
        feedback->pushInfo(QStringLiteral("Buffer: %1").arg(ToQString(form.txtBuffer.Text)));

    const bool ended = form.LastRun() == RunOutcome::kComplete || feedback->isCanceled();
    if (!ended) Fail(session.Messages(), QStringLiteral("The analysis did not run."));
    if (written.Failed > 0)
        feedback->reportError(QStringLiteral("%1 of %2 distributions could not be computed; the report says why.")
                                  .arg(written.Failed)
                                  .arg(written.Distributions));
    if (written.Distributions > 0 && written.Failed == written.Distributions)
        throw QgsProcessingException(
            QStringLiteral("None of the %1 distributions could be computed; the report says why.")
                .arg(written.Distributions));
    if (form.Ranges().Failed()) Fail(session.Messages(), QStringLiteral("The GeoPackage could not be written."));
    if (context.project() != nullptr && parameterAsBoolean(parameters, QStringLiteral("LOAD"), context))
        load_on_completion(written.Catalogue, context);
    return {{QStringLiteral("OUTPUT"), folder},
            {QStringLiteral("REPORT"), report_of(folder)},
            {QStringLiteral("PAGE"), ToQString(page.Written().string())},
            {QStringLiteral("PACKAGE"), ToQString(form.Ranges().Written().lexically_normal().string())},
            {QStringLiteral("RASTERS"), written.Rasters},
            {QStringLiteral("ISOPLETHS"), written.Isopleths},
            {QStringLiteral("DISTRIBUTIONS"), written.Distributions},
            {QStringLiteral("FAILED"), written.Failed}};
}

}  // namespace wxl::qgis
