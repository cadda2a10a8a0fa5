// The Processing provider: the algorithms give what the command line tool gives.

#include "adapters/qgis/processing/wxl_provider.h"
#include "adapters/qgis/qgis_versions.h"
#include "platform/text.h"
#include "tests/gui/qgis_environment.h"
#include "tests/support/places.h"
#include "tests/support/scratch_folder.h"
#include "tests/unit/cli/captured_console.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iterator>
#include <map>
#include <memory>
#include <qgsexpressioncontextutils.h>
#include <qgsfillsymbollayer.h>
#include <qgslayertree.h>
#include <qgsprocessingalgorithm.h>
#include <qgsprocessingcontext.h>
#include <qgsprocessingfeedback.h>
#include <qgsprocessingmodelalgorithm.h>
#include <qgsprocessingregistry.h>
#include <qgsprocessingutils.h>
#include <qgsproject.h>
#include <qgsrasterlayer.h>
#include <qgsrenderer.h>
#include <qgssinglesymbolrenderer.h>
#include <qgssymbol.h>
#include <qgsvectorlayer.h>
#include <QIcon>
#include <QPainter>
#include <QUrl>
#include <regex>
#include <set>
#include <sstream>

namespace wxl::qgis {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

/// Keeps the log, and cancels when the progress passes a mark.
class TestFeedback final : public QgsProcessingFeedback {
public:
    TestFeedback() : QgsProcessingFeedback(false) {
        connect(this, &QgsFeedback::progressChanged, this, [this](double progress) {
            Progress = std::max(Progress, progress);
            if (progress >= CancelAt) cancel();
        });
    }
    void reportError(const QString& error, bool) override { Errors += error + '\n'; }
    void pushWarning(const QString& warning) override { Warnings += warning + '\n'; }
    void pushInfo(const QString& info) override { Infos += info + '\n'; }

    double CancelAt = 1000.0;
    double Progress = 0.0;
    QString Errors;
    QString Warnings;
    QString Infos;
};

QString text_of(const fs::path& path) {
    return QString::fromStdString(path.string());
}

std::string bytes_of(const fs::path& file) {
    std::ifstream source(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(source), {}};
}

/// The files of a folder by their path in it. Reports and pages are compared without the times of the run and
/// their folder.
std::map<std::string, std::string> contents_of(const fs::path& folder) {
    std::map<std::string, std::string> contents;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        const std::string name = fs::relative(entry.path(), folder).string();
        if (!entry.is_regular_file() || name.front() == '.') continue;
        std::string bytes = bytes_of(entry.path());
        if (const fs::path kind = entry.path().extension(); kind == ".txt" || kind == ".html") {
            bytes = std::regex_replace(bytes, std::regex("(Start|Finish) time: [^\r]*|begun [^<]* finished [^<]*"), "");
            for (std::size_t at = bytes.find(folder.string()); at != std::string::npos;
                 at = bytes.find(folder.string()))
                bytes.replace(at, folder.string().size(), "FOLDER");
        }
        contents[name] = bytes;
    }
    return contents;
}

/// A layer of the package that a run gives.
std::unique_ptr<QgsVectorLayer> layer_of(const QVariantMap& results, const char* name) {
    return std::make_unique<QgsVectorLayer>(
        results.value(QStringLiteral("PACKAGE")).toString() + QStringLiteral("|layername=") + QLatin1String(name),
        QLatin1String(name), QStringLiteral("ogr"));
}

class ProcessingTest : public testing::Test {
protected:
    void SetUp() override {
        AddWxlProvider();
        Wxl({"-q", "import", tests::SourceFile("samples/wolves.csv").string(), Fixes()});
    }

    void TearDown() override {
        QgsProject::instance()->clear();
        RemoveWxlProvider();
    }

    std::string Fixes() const { return (m_folder / "fixes.shp").string(); }
    fs::path At(const std::string& name) const { return m_folder / name; }

    static std::string Wxl(const std::vector<std::string>& arguments) {
        const cli::Ran ran = cli::run_wxl(arguments);
        EXPECT_EQ(ran.Code, 0) << ran.Err;
        return ran.Out;
    }

    /// The table of wxl stats without its header.
    std::vector<std::vector<std::string>> StatsRows() const {
        Wxl({"-q", "stats", Fixes(), "--id-field", "animal", "--csv", At("stats.csv").string()});
        std::ifstream lines(At("stats.csv"));
        std::vector<std::vector<std::string>> rows;
        for (std::string line; std::getline(lines, line);) rows.push_back(platform::Split(line, ','));
        rows.erase(rows.begin());
        return rows;
    }

    /// Runs an algorithm as the toolbox does; throws what it throws.
    QVariantMap Run(const char* name, const QVariantMap& parameters) {
        const QgsProcessingAlgorithm* algorithm =
            QgsApplication::processingRegistry()->algorithmById(QStringLiteral("wxltools:") + QLatin1String(name));
        if (!algorithm) throw std::runtime_error("no such algorithm");
        QString message;
        if (!algorithm->checkParameterValues(parameters, m_context, &message)) throw QgsProcessingException(message);
        return algorithm->run(parameters, m_context, &m_feedback, nullptr, {}, false);
    }

    /// What Run throws, as text; "" when it throws nothing.
    std::string Failure(const char* name, const QVariantMap& parameters) {
        try {
            Run(name, parameters);
        } catch (const QgsProcessingException& error) {
            return error.what().toStdString();
        }
        return {};
    }

    QVariantMap KernelParameters(const std::string& out) const {
        return {{QStringLiteral("INPUT"), QString::fromStdString(Fixes())},
                {QStringLiteral("ID_FIELD"), QStringLiteral("animal")},
                {QStringLiteral("CELL_SIZE"), 200.0},
                {QStringLiteral("OUTPUT"), text_of(At(out))}};
    }

    QVariantMap RangeParameters(const std::string& out) const {
        return {{QStringLiteral("INPUT"), QString::fromStdString(Fixes())},
                {QStringLiteral("ID_FIELD"), QStringLiteral("animal")},
                {QStringLiteral("TIME_FIELD"), QStringLiteral("Date")},
                {QStringLiteral("TIME_OF_DAY_FIELD"), QStringLiteral("Time1")},
                {QStringLiteral("OUTPUT"), text_of(At(out))}};
    }

    std::vector<std::string> KernelCall(const std::string& out) const {
        return {"-q", "kde", Fixes(), "--id-field", "animal", "--cell-size", "200", "--out", At(out).string()};
    }

    /// The layer in the project, by name "fixes".
    QgsVectorLayer* AddToProject() {
        auto* layer =
            new QgsVectorLayer(QString::fromStdString(Fixes()), QStringLiteral("fixes"), QStringLiteral("ogr"));
        QgsProject::instance()->addMapLayer(layer);
        m_context.setProject(QgsProject::instance());
        return layer;
    }

    tests::ScratchFolder m_folder;
    QgsProcessingContext m_context;
    TestFeedback m_feedback;
};

TEST_F(ProcessingTest, A_layer_of_delimited_text_gives_the_rasters_of_the_same_fixes) {
    const QgsVectorLayer shapefile(QString::fromStdString(Fixes()), QStringLiteral("fixes"), QStringLiteral("ogr"));
    {
        std::ofstream table(At("fixes.csv"));
        table.precision(17);
        table << "animal,x,y,Time2\n";
        QgsFeatureIterator rows = shapefile.getFeatures();
        for (QgsFeature row; rows.nextFeature(row);)
            table << row.attribute(QStringLiteral("animal")).toString().toStdString() << ','
                  << row.geometry().asPoint().x() << ',' << row.geometry().asPoint().y() << ','
                  << row.attribute(QStringLiteral("Time2")).toLongLong() << '\n';
    }
    auto* text = new QgsVectorLayer(
        QStringLiteral("file://") + text_of(At("fixes.csv")) + QStringLiteral("?xField=x&yField=y&crs=EPSG:32633"),
        QStringLiteral("text"), QStringLiteral("delimitedtext"));
    ASSERT_TRUE(text->isValid());
    ASSERT_EQ(text->featureCount(), 1001);
    QgsProject::instance()->addMapLayer(text);
    m_context.setProject(QgsProject::instance());

    Run("kerneldensity", KernelParameters("from_shapefile"));
    QVariantMap parameters = KernelParameters("from_text");
    parameters[QStringLiteral("INPUT")] = text->id();
    Run("kerneldensity", parameters);

    auto expected = contents_of(At("from_shapefile"));
    auto given = contents_of(At("from_text"));
    expected.erase("WXL_KDE_ANALYSIS.txt");
    given.erase("WXL_KDE_ANALYSIS.txt");
    EXPECT_EQ(expected.size(), 4U * 6U + 2U);  // GRIDs of four animals, summary, settings
    EXPECT_EQ(given, expected);
}

TEST_F(ProcessingTest, Provider_offers_its_algorithms_until_it_is_removed) {
    const QgsProcessingProvider* provider =
        QgsApplication::processingRegistry()->providerById(QStringLiteral("wxltools"));
    ASSERT_NE(provider, nullptr);
    EXPECT_EQ(provider->name(), "WXL Tools");
    EXPECT_FALSE(provider->icon().isNull());
    QStringList names;
    for (const QgsProcessingAlgorithm* algorithm : provider->algorithms()) {
        names << algorithm->name();
        EXPECT_FALSE(algorithm->icon().isNull());
        EXPECT_FALSE(algorithm->shortHelpString().isEmpty());
        EXPECT_FALSE(algorithm->shortDescription().isEmpty());
        EXPECT_FALSE(algorithm->group().isEmpty());
        EXPECT_TRUE(algorithm->flags() & kAlgorithmNoThreading);
        EXPECT_TRUE(algorithm->flags() & kAlgorithmCanCancel);
    }
    names.sort();
    EXPECT_EQ(names.join(QLatin1Char(' ')),
              "areacurve autocorrelatedranges kerneldensity minimumconvexpolygons observationfields overlap "
              "removeduplicates statistics");
    AddWxlProvider();  // a second time does nothing
    RemoveWxlProvider();
    EXPECT_EQ(QgsApplication::processingRegistry()->providerById(QStringLiteral("wxltools")), nullptr);
    RemoveWxlProvider();
}

TEST_F(ProcessingTest, Kernel_run_writes_the_bytes_of_the_command_line) {
    auto call = KernelCall("expected");
    call.insert(call.end(), {"--prefix", "W", "--bandwidth", "lscv", "--isopleths", "95,50", "--polygons", "--lines",
                             "--independence", "--html", "--gpkg", "--answer", "yes"});
    Wxl(call);
    auto parameters = KernelParameters("actual");
    parameters[QStringLiteral("PREFIX")] = QStringLiteral("W");
    parameters[QStringLiteral("METHOD")] = 1;
    parameters[QStringLiteral("ISOPLETHS")] = QStringLiteral("95,50");
    parameters[QStringLiteral("POLYGONS")] = true;
    parameters[QStringLiteral("LINES")] = true;
    parameters[QStringLiteral("INDEPENDENCE")] = true;
    parameters[QStringLiteral("HTML")] = true;
    parameters[QStringLiteral("GPKG")] = true;
    const QVariantMap results = Run("kerneldensity", parameters);
    EXPECT_EQ(contents_of(At("actual")), contents_of(At("expected")));
    EXPECT_GT(contents_of(At("actual")).size(), 10U);
    EXPECT_EQ(results.value(QStringLiteral("FAILED")).toInt(), 0);
    const int animals = results.value(QStringLiteral("DISTRIBUTIONS")).toInt();
    EXPECT_GT(animals, 1);
    EXPECT_EQ(results.value(QStringLiteral("RASTERS")).toStringList().size(), animals);
    EXPECT_EQ(results.value(QStringLiteral("ISOPLETHS")).toStringList().size(), 2 * animals);
    EXPECT_EQ(results.value(QStringLiteral("OUTPUT")).toString(), text_of(At("actual")));
    EXPECT_TRUE(fs::exists(results.value(QStringLiteral("REPORT")).toString().toStdString()));
    EXPECT_EQ(results.value(QStringLiteral("PAGE")).toString(), text_of(At("actual") / "WXL_KDE_ANALYSIS.html"));
    EXPECT_EQ(results.value(QStringLiteral("PACKAGE")).toString(), text_of(At("actual") / "RANGES.gpkg"));
    EXPECT_EQ(contents_of(At("actual")).count("RANGES.gpkg"), 1U);
    EXPECT_EQ(contents_of(At("actual")).count("WXL_KDE_ANALYSIS.html"), 1U);
    EXPECT_EQ(contents_of(At("actual")).count("WXL_KDE_SUMMARY.csv"), 1U);
    EXPECT_GT(m_feedback.Progress, 50.0);
    EXPECT_TRUE(m_feedback.Infos.contains(QStringLiteral("Processing complete."))) << m_feedback.Infos.toStdString();
}

TEST_F(ProcessingTest, Kernel_run_with_other_choices_writes_the_bytes_of_the_command_line) {
    auto call = KernelCall("expected");
    call.insert(call.end(),
                {"--bandwidth", "prop:0.5,1", "--adaptive", "--rescale", "--extent", "min", "--scaling", "1000",
                 "--raster-format", "GTiff", "--isopleths", "50,95", "--donuts", "--answer", "yes"});
    Wxl(call);
    auto parameters = KernelParameters("actual");
    parameters[QStringLiteral("METHOD")] = 4;
    parameters[QStringLiteral("BANDWIDTHS")] = QStringLiteral("0.5,1");
    parameters[QStringLiteral("ADAPTIVE")] = true;
    parameters[QStringLiteral("RESCALE")] = true;
    parameters[QStringLiteral("EXTENT_MODE")] = 1;
    parameters[QStringLiteral("SCALING")] = 1000.0;
    parameters[QStringLiteral("RASTER_FORMAT")] = 1;
    parameters[QStringLiteral("ISOPLETHS")] = QStringLiteral("50,95");
    parameters[QStringLiteral("DONUTS")] = true;
    const QVariantMap results = Run("kerneldensity", parameters);
    EXPECT_EQ(contents_of(At("actual")), contents_of(At("expected")));
    EXPECT_EQ(results.value(QStringLiteral("PAGE")).toString(), "");
    EXPECT_EQ(results.value(QStringLiteral("PACKAGE")).toString(), "");
}

// Isopleths that are in no shapefile are in the package.
TEST_F(ProcessingTest, Kernel_run_of_a_package_alone_writes_the_bytes_of_the_command_line) {
    auto call = KernelCall("expected");
    call.insert(call.end(), {"--isopleths", "95, 90, 50", "--gpkg", "--answer", "yes"});
    Wxl(call);
    auto parameters = KernelParameters("actual");
    parameters[QStringLiteral("GPKG")] = true;
    parameters[QStringLiteral("ISOPLETHS")] = QStringLiteral("95, 101");
    EXPECT_EQ(Failure("kerneldensity", parameters), "Isopleths: \"101\" is not a number above 0 and at most 100");
    parameters.remove(QStringLiteral("ISOPLETHS"));
    const QVariantMap results = Run("kerneldensity", parameters);
    EXPECT_EQ(contents_of(At("actual")), contents_of(At("expected")));
    EXPECT_EQ(results.value(QStringLiteral("ISOPLETHS")).toStringList().size(), 0);
    EXPECT_EQ(layer_of(results, "isopleths")->featureCount(), 4 * 3);
    parameters = KernelParameters("fixes_alone");
    parameters[QStringLiteral("GPKG")] = true;
    parameters[QStringLiteral("ISOPLETHS")] = QString();
    const QVariantMap fixes = Run("kerneldensity", parameters);
    EXPECT_EQ(layer_of(fixes, "isopleths")->featureCount(), 0);
    EXPECT_EQ(layer_of(fixes, "fixes")->featureCount(), 1001);
}

TEST_F(ProcessingTest, Autocorrelated_ranges_are_the_bytes_of_the_command_line) {
    const std::vector<std::string> call = {"-q",          "akde",      Fixes(),
                                           "--id-field",  "animal",    "--time-field",
                                           "Date,Time1",  "--out",     At("expected").string(),
                                           "--isopleths", "95,50",     "--lines",
                                           "--html",      "--weights", "optimal",
                                           "--cell-size", "100",       "--extent",
                                           "full:3000",   "--prefix",  "A",
                                           "--scaling",   "1000",      "--raster-format",
                                           "GTiff",       "--gpkg"};
    Wxl(call);
    QVariantMap parameters = RangeParameters("actual");
    parameters[QStringLiteral("LINES")] = true;
    parameters[QStringLiteral("HTML")] = true;
    parameters[QStringLiteral("OPTIMAL_WEIGHTS")] = true;
    parameters[QStringLiteral("CELL_SIZE")] = 100.0;
    parameters[QStringLiteral("EXTENT_MODE")] = 1;
    parameters[QStringLiteral("BUFFER")] = 3000.0;
    parameters[QStringLiteral("PREFIX")] = QStringLiteral("A");
    parameters[QStringLiteral("SCALING")] = 1000.0;
    parameters[QStringLiteral("RASTER_FORMAT")] = 1;
    parameters[QStringLiteral("GPKG")] = true;
    const QVariantMap results = Run("autocorrelatedranges", parameters);
    EXPECT_EQ(contents_of(At("actual")), contents_of(At("expected")));
    EXPECT_EQ(contents_of(At("actual")).size(), 4U * 11U + 3U);
    EXPECT_EQ(results.value(QStringLiteral("PACKAGE")).toString(), text_of(At("actual") / "RANGES.gpkg"));
    EXPECT_EQ(results.value(QStringLiteral("DISTRIBUTIONS")).toInt(), 4);
    EXPECT_EQ(results.value(QStringLiteral("RASTERS")).toStringList().size(), 4);
    EXPECT_EQ(results.value(QStringLiteral("ISOPLETHS")).toStringList().size(), 8);
    EXPECT_EQ(results.value(QStringLiteral("PAGE")).toString(), text_of(At("actual") / "WXL_AKDE_ANALYSIS.html"));
    EXPECT_EQ(results.value(QStringLiteral("SUMMARY")).toString(), text_of(At("actual") / "WXL_AKDE_SUMMARY.csv"));
    EXPECT_GT(m_feedback.Progress, 90.0);
}

TEST_F(ProcessingTest, Autocorrelated_ranges_with_a_given_model_and_a_grid_of_their_own) {
    Wxl({"-q", "akde", Fixes(), "--id-field", "animal", "--time-field", "Date,Time1", "--out", At("expected").string(),
         "--at", "OU:isotropic:86400"});
    QVariantMap parameters = RangeParameters("actual");
    parameters[QStringLiteral("MODEL")] = QStringLiteral("OU:isotropic:86400");
    const QVariantMap results = Run("autocorrelatedranges", parameters);
    EXPECT_EQ(contents_of(At("actual")), contents_of(At("expected")));
    EXPECT_EQ(results.value(QStringLiteral("PACKAGE")).toString(), "");
    // Names that are taken are told, and nothing is changed.
    EXPECT_EQ(Failure("autocorrelatedranges", parameters),
              (At("actual") / "1").string() + " exists: choose another folder or prefix");
    EXPECT_EQ(contents_of(At("actual")), contents_of(At("expected")));
}

TEST_F(ProcessingTest, Mistakes_in_autocorrelated_ranges_are_told_before_the_run) {
    QVariantMap parameters = RangeParameters("out");
    parameters[QStringLiteral("MODEL")] = QStringLiteral("OUF:5");
    EXPECT_EQ(Failure("autocorrelatedranges", parameters),
              "The given model \"OUF:5\" is none like IID, OU:TAU, OUf:TAU or OUF:TAU1,TAU2 with time scales in "
              "seconds, TAU2 below TAU1.");
    parameters = RangeParameters("out");
    parameters[QStringLiteral("ISOPLETHS")] = QStringLiteral("95, 100");
    EXPECT_EQ(Failure("autocorrelatedranges", parameters), "Isopleths: 100 % has no outline.");
    parameters = RangeParameters("out");
    parameters[QStringLiteral("EXTENT_MODE")] = 2;
    EXPECT_EQ(Failure("autocorrelatedranges", parameters), "Choose the reference raster.");
    parameters = RangeParameters("out");
    parameters[QStringLiteral("TIME_FIELD")] = QStringLiteral("when");
    EXPECT_THAT(Failure("autocorrelatedranges", parameters),
                HasSubstr("has no field \"when\" for the time of its fixes; its fields are: "));
    EXPECT_FALSE(fs::exists(At("out") / "WXL_AKDE_SUMMARY.csv"));
}

// Anybody who opens the package sees estimates and limits apart, without the plugin.
TEST_F(ProcessingTest, The_package_of_autocorrelated_ranges_brings_its_styles) {
    QVariantMap parameters = RangeParameters("out");
    parameters[QStringLiteral("GPKG")] = true;
    const QVariantMap results = Run("autocorrelatedranges", parameters);
    const auto ranges = layer_of(results, "isopleths");
    ASSERT_TRUE(ranges->isValid());
    EXPECT_EQ(ranges->featureCount(), 4 * 6);
    EXPECT_TRUE(ranges->renderer()->orderByEnabled()) << "the largest first";
    const std::map<QString, Qt::BrushStyle> fills = {{QStringLiteral("est"), Qt::SolidPattern},
                                                     {QStringLiteral("low"), Qt::NoBrush},
                                                     {QStringLiteral("high"), Qt::NoBrush}};
    QgsRenderContext render;
    render.expressionContext().appendScope(QgsExpressionContextUtils::layerScope(ranges.get()));
    ranges->renderer()->startRender(render, ranges->fields());
    QgsFeatureIterator rows = ranges->getFeatures();
    for (QgsFeature row; rows.nextFeature(row);) {
        render.expressionContext().setFeature(row);
        const QString bound = row.attribute(QStringLiteral("bound")).toString();
        const QgsSymbolList symbols = ranges->renderer()->originalSymbolsForFeature(row, render);
        ASSERT_EQ(symbols.size(), 1) << bound.toStdString();
        const auto* fill = dynamic_cast<const QgsSimpleFillSymbolLayer*>(symbols.front()->symbolLayer(0));
        ASSERT_NE(fill, nullptr);
        EXPECT_EQ(fill->brushStyle(), fills.at(bound));
        EXPECT_EQ(fill->strokeStyle() == Qt::SolidLine, bound == QLatin1String("est"));
    }
    ranges->renderer()->stopRender(render);
    ASSERT_TRUE(ranges->setSubsetString(QStringLiteral("bound = 'est'")));
    EXPECT_EQ(ranges->featureCount(), 4 * 2) << "of the filtered rows";
    EXPECT_EQ(layer_of(results, "fixes")->featureCount(), 1001);
    EXPECT_EQ(layer_of(results, "summary")->featureCount(), 4 * 2);
}

TEST_F(ProcessingTest, A_package_of_other_ranges_stays_as_it_is) {
    QVariantMap kernels = KernelParameters("out");
    kernels[QStringLiteral("GPKG")] = true;
    Run("kerneldensity", kernels);
    const std::string before = bytes_of(At("out") / "RANGES.gpkg");
    QVariantMap parameters = RangeParameters("out");
    parameters[QStringLiteral("GPKG")] = true;
    parameters[QStringLiteral("PREFIX")] = QStringLiteral("A");
    parameters[QStringLiteral("MODEL")] = QStringLiteral("OU:isotropic:86400");
    const QVariantMap results = Run("autocorrelatedranges", parameters);
    EXPECT_EQ(results.value(QStringLiteral("PACKAGE")).toString(), "");
    EXPECT_THAT(m_feedback.Warnings.toStdString(),
                HasSubstr("RANGES.gpkg is not a package of ranges with limits in the coordinate system of the points, "
                          "and was left as it is; no package was written. Choose another output folder for one."));
    EXPECT_TRUE(bytes_of(At("out") / "RANGES.gpkg") == before);
}

// Its journal tells that another program writes into it.
TEST_F(ProcessingTest, A_package_that_cannot_be_written_is_a_failure) {
    fs::create_directories(At("out"));
    std::ofstream(At("out") / "RANGES.gpkg-journal") << "another program's";
    QVariantMap parameters = RangeParameters("out");
    parameters[QStringLiteral("GPKG")] = true;
    parameters[QStringLiteral("MODEL")] = QStringLiteral("OU:isotropic:86400");
    EXPECT_EQ(Failure("autocorrelatedranges", parameters),
              "Not all could be written; the log above says what and why.");
    EXPECT_THAT(m_feedback.Warnings.toStdString(), HasSubstr("RANGES.gpkg"));
    EXPECT_TRUE(fs::exists(At("out") / "WXL_AKDE_SUMMARY.csv")) << "what was done is kept";
    QVariantMap kernels = KernelParameters("out");
    kernels[QStringLiteral("GPKG")] = true;
    kernels[QStringLiteral("PREFIX")] = QStringLiteral("K");
    EXPECT_THAT(Failure("kerneldensity", kernels), HasSubstr("RANGES.gpkg"));
    EXPECT_TRUE(fs::exists(At("out") / "WXL_KDE_SUMMARY.csv"));
    EXPECT_FALSE(fs::exists(At("out") / "RANGES.gpkg"));
}

// Every outline has a symbol of its percentage and bound; limits have no fill.
TEST_F(ProcessingTest, Loaded_ranges_show_estimate_and_limits) {
    QgsVectorLayer* fixes = AddToProject();
    QVariantMap parameters = RangeParameters("loaded");
    parameters[QStringLiteral("INPUT")] = fixes->id();
    Run("autocorrelatedranges", parameters);
    const auto toLoad = m_context.layersToLoadOnCompletion();
    ASSERT_EQ(toLoad.size(), 8);
    std::size_t outlines = 0;
    for (auto entry = toLoad.begin(); entry != toLoad.end(); ++entry) {
        QgsMapLayer* layer = QgsProcessingUtils::mapLayerFromString(entry.key(), m_context);
        ASSERT_NE(layer, nullptr);
        QgsProject::instance()->addMapLayer(m_context.temporaryLayerStore()->takeMapLayer(layer));
        entry->postProcessor()->postProcessLayer(layer, m_context, &m_feedback);
        auto* vector = qobject_cast<QgsVectorLayer*>(layer);
        if (!vector) continue;
        QgsRenderContext render;
        render.expressionContext().appendScope(QgsExpressionContextUtils::layerScope(vector));
        QgsFeatureRenderer& renderer = *vector->renderer();
        renderer.startRender(render, vector->fields());
        QgsFeatureIterator rows = vector->getFeatures();
        for (QgsFeature row; rows.nextFeature(row); ++outlines) {
            render.expressionContext().setFeature(row);
            const auto* symbol = renderer.symbolForFeature(row, render);
            ASSERT_NE(symbol, nullptr) << row.attribute(QStringLiteral("BOUND")).toString().toStdString();
            const auto* fill = dynamic_cast<const QgsSimpleFillSymbolLayer*>(symbol->symbolLayer(0));
            ASSERT_NE(fill, nullptr);
            const bool estimate = row.attribute(QStringLiteral("BOUND")).toString() == QLatin1String("est");
            EXPECT_EQ(fill->brushStyle() == Qt::SolidPattern, estimate);
            EXPECT_EQ(fill->strokeStyle() == Qt::SolidLine, estimate);
        }
        renderer.stopRender(render);
    }
    EXPECT_EQ(outlines, 4U * 6U);
    EXPECT_EQ(QgsProject::instance()->layerTreeRoot()->children().at(1)->name(), "Home ranges: fixes, AKDE");
}

TEST_F(ProcessingTest, Selected_fixes_give_the_bytes_of_a_condition) {
    const std::string first = StatsRows().front().front();
    auto call = KernelCall("expected");
    call.insert(call.end(), {"--where", "animal = '" + first + "'", "--answer", "yes"});
    Wxl(call);
    QgsVectorLayer* layer = AddToProject();
    layer->selectByExpression(QStringLiteral("\"animal\" = '%1'").arg(QString::fromStdString(first)));
    ASSERT_GT(layer->selectedFeatureCount(), 0);
    auto parameters = KernelParameters("actual");
    parameters[QStringLiteral("INPUT")] = QVariant::fromValue(QgsProcessingFeatureSourceDefinition(layer->id(), true));
    const QVariantMap results = Run("kerneldensity", parameters);
    EXPECT_EQ(results.value(QStringLiteral("DISTRIBUTIONS")).toInt(), 1);
    EXPECT_EQ(contents_of(At("actual")), contents_of(At("expected")));
    EXPECT_EQ(m_context.layersToLoadOnCompletion().size(), 1);
}

TEST_F(ProcessingTest, Loaded_results_have_names_styles_and_group_of_the_dialog) {
    QgsVectorLayer* fixes = AddToProject();
    auto parameters = KernelParameters("loaded");
    parameters[QStringLiteral("INPUT")] = fixes->id();
    parameters[QStringLiteral("POLYGONS")] = true;
    parameters[QStringLiteral("PREFIX")] = QStringLiteral("r");
    const QVariantMap results = Run("kerneldensity", parameters);
    const int animals = results.value(QStringLiteral("DISTRIBUTIONS")).toInt();
    ASSERT_GT(animals, 1);
    // As the toolbox does when an algorithm is done.
    const auto toLoad = m_context.layersToLoadOnCompletion();
    ASSERT_EQ(toLoad.size(), 2 * animals);
    for (auto entry = toLoad.begin(); entry != toLoad.end(); ++entry) {
        QgsMapLayer* layer = QgsProcessingUtils::mapLayerFromString(entry.key(), m_context);
        ASSERT_NE(layer, nullptr) << entry.key().toStdString();
        QgsProject::instance()->addMapLayer(m_context.temporaryLayerStore()->takeMapLayer(layer));
        ASSERT_NE(entry->postProcessor(), nullptr);
        entry->postProcessor()->postProcessLayer(layer, m_context, &m_feedback);
    }
    const QgsLayerTreeGroup& root = *QgsProject::instance()->layerTreeRoot();
    ASSERT_EQ(root.children().size(), 2);
    EXPECT_EQ(root.children().at(0)->name(), "fixes");
    EXPECT_EQ(root.children().at(1)->name(), "Home ranges: fixes, reference bandwidth");
    const auto nodes = root.children().at(1)->children();
    ASSERT_EQ(nodes.size(), 2 * animals);
    const std::string first = StatsRows().front().front();
    EXPECT_EQ(nodes.at(0)->name().toStdString(), first + ": isopleth polygons");
    EXPECT_EQ(nodes.at(animals)->name().toStdString(), first + ": density");
    EXPECT_EQ(QgsLayerTree::toLayer(nodes.at(animals))->layer()->blendMode(), QPainter::CompositionMode_Multiply);
}

TEST_F(ProcessingTest, Help_is_a_page_of_the_guide_and_rare_parameters_are_folded) {
    const auto* kernel = QgsApplication::processingRegistry()->algorithmById(QStringLiteral("wxltools:kerneldensity"));
    const QString page = QUrl(kernel->helpUrl()).toLocalFile();
    EXPECT_TRUE(page.endsWith(QStringLiteral("/processing.html"))) << page.toStdString();
    std::stringstream text;
    text << std::ifstream(page.toStdString()).rdbuf();
    EXPECT_GT(text.str().size(), 2000U);
    for (const char* name : {"PREFIX", "RESCALE", "SCALING", "RASTER_FORMAT", "REACH", "VERBOSE"})
        EXPECT_TRUE(kernel->parameterDefinition(QLatin1String(name))->flags() & kParameterAdvanced) << name;
    for (const char* name : {"INPUT", "ID_FIELD", "CELL_SIZE", "METHOD", "OUTPUT"})
        EXPECT_FALSE(kernel->parameterDefinition(QLatin1String(name))->flags() & kParameterAdvanced) << name;
    std::set<std::string> groups;
    for (const auto* algorithm :
         QgsApplication::processingRegistry()->providerById(QStringLiteral("wxltools"))->algorithms())
        groups.insert(algorithm->group().toStdString());
    EXPECT_EQ(groups, (std::set<std::string>{"Home ranges", "Movement"}));
}

TEST_F(ProcessingTest, Reference_raster_gives_its_extent) {
    Run("kerneldensity", KernelParameters("first"));
    const fs::path raster = At("first") / "1";
    ASSERT_TRUE(fs::exists(raster));
    auto parameters = KernelParameters("second");
    parameters.remove(QStringLiteral("CELL_SIZE"));
    parameters[QStringLiteral("EXTENT_MODE")] = 2;
    EXPECT_EQ(Failure("kerneldensity", parameters), "Choose the reference raster.");
    QgsRasterLayer reference(text_of(raster), QStringLiteral("fixes"));  // the name of the point layer
    ASSERT_TRUE(reference.isValid());
    parameters[QStringLiteral("REFERENCE")] = QVariant::fromValue(&reference);
    Run("kerneldensity", parameters);
    EXPECT_EQ(bytes_of(At("second") / "1" / "w001001.adf"), bytes_of(raster / "w001001.adf"));
}

TEST_F(ProcessingTest, Cancel_stops_after_the_present_animal_and_keeps_what_was_done) {
    m_feedback.CancelAt = 1.0;
    const QVariantMap results = Run("kerneldensity", KernelParameters("out"));
    EXPECT_EQ(results.value(QStringLiteral("DISTRIBUTIONS")).toInt(), 1);
    EXPECT_TRUE(fs::exists(At("out") / "1"));
    EXPECT_FALSE(fs::exists(At("out") / "2"));
    EXPECT_THAT(bytes_of(At("out") / "WXL_KDE_ANALYSIS.txt"), HasSubstr("Finish time: "));
}

TEST_F(ProcessingTest, Mistakes_are_told_before_the_run) {
    auto parameters = KernelParameters("out");
    parameters.remove(QStringLiteral("CELL_SIZE"));
    EXPECT_EQ(Failure("kerneldensity", parameters), "Give the cell size in map units.");
    for (const QVariant& none : {null_of(QMetaType::Double), QVariant(QString()), QVariant(QStringLiteral(" "))}) {
        parameters[QStringLiteral("CELL_SIZE")] = none;
        EXPECT_EQ(Failure("kerneldensity", parameters), "Give the cell size in map units.");
    }
    parameters = KernelParameters("out");
    parameters[QStringLiteral("METHOD")] = 3;
    parameters[QStringLiteral("BANDWIDTHS")] = QStringLiteral("100, x");
    EXPECT_EQ(Failure("kerneldensity", parameters), "Bandwidths: \"x\" is not a number above 0");
    parameters = KernelParameters("out");
    parameters[QStringLiteral("LINES")] = true;
    parameters[QStringLiteral("ISOPLETHS")] = QStringLiteral("95, 101");
    EXPECT_EQ(Failure("kerneldensity", parameters), "Isopleths: \"101\" is not a number above 0 and at most 100");
    parameters = KernelParameters("out");
    parameters[QStringLiteral("PREFIX")] = QStringLiteral("seven77");
    EXPECT_EQ(Failure("kerneldensity", parameters), "The prefix has more than 6 characters.");
    parameters = KernelParameters("out");
    parameters[QStringLiteral("ID_FIELD")] = QStringLiteral("nothing");
    EXPECT_EQ(Failure("kerneldensity", parameters), "The layer has no field \"nothing\".");
    EXPECT_FALSE(fs::exists(At("out") / "WXL_KDE_ANALYSIS.txt"));
}

TEST_F(ProcessingTest, Layer_in_degrees_is_refused) {
    QgsVectorLayer degrees(QStringLiteral("Point?crs=EPSG:4326&field=animal:string(20)"), QStringLiteral("d"),
                           QStringLiteral("memory"));
    auto parameters = KernelParameters("out");
    parameters[QStringLiteral("INPUT")] = QVariant::fromValue(&degrees);
    EXPECT_EQ(Failure("kerneldensity", parameters),
              "The layer \"d\" is in degrees (EPSG:4326), in which distances cannot be measured. Please reproject it "
              "first, for example to its UTM zone.");
}

TEST_F(ProcessingTest, Folder_with_rasters_of_the_same_names_fails_and_says_why) {
    Run("kerneldensity", KernelParameters("out"));
    const auto before = contents_of(At("out"));
    const std::string failure = Failure("kerneldensity", KernelParameters("out"));
    EXPECT_EQ(failure,
              "User error: Error: naming conflict detected (pre-existing raster in output folder). You should use "
              "a new, empty folder for the output of this tool. Exiting...");
    EXPECT_EQ(m_feedback.Errors.trimmed().toStdString(), failure);
    EXPECT_EQ(contents_of(At("out")), before);
}

TEST_F(ProcessingTest, Overlapping_fixes_end_the_run_where_they_are_not_accepted) {
    auto parameters = KernelParameters("out");
    QgsVectorLayer layer(QStringLiteral("Point?crs=EPSG:32632&field=animal:integer"), QStringLiteral("twice"),
                         QStringLiteral("memory"));
    QgsFeatureList features;
    for (const double x : {0.0, 0.0, 1000.0, 2000.0}) {
        QgsFeature feature(layer.fields());
        feature.setAttribute(0, 1);
        feature.setGeometry(QgsGeometry::fromPointXY({500000.0 + x, 5800000.0 + 2.0 * x}));
        features << feature;
    }
    ASSERT_TRUE(layer.dataProvider()->addFeatures(features));
    parameters[QStringLiteral("INPUT")] = QVariant::fromValue(&layer);
    parameters[QStringLiteral("ACCEPT_OVERLAPS")] = false;
    EXPECT_NE(Failure("kerneldensity", parameters), "");
    EXPECT_FALSE(fs::exists(At("out") / "1"));
    EXPECT_TRUE(m_feedback.Infos.contains(QStringLiteral("Answer: no"))) << m_feedback.Infos.toStdString();
    parameters[QStringLiteral("ACCEPT_OVERLAPS")] = true;
    EXPECT_EQ(Failure("kerneldensity", parameters), "");
    EXPECT_TRUE(fs::exists(At("out") / "1"));
}

TEST_F(ProcessingTest, Overlap_is_the_bytes_of_the_command_line) {
    std::vector<std::string> call = {"-q",          "overlap", Fixes(),         "--id-field",           "animal",
                                     "--percent",   "95,50",   "--conditional", "--bandwidth",          "adhoc",
                                     "--cell-size", "200",     "--out",         At("expected").string()};
    Wxl(call);
    QVariantMap parameters = {{QStringLiteral("INPUT"), QString::fromStdString(Fixes())},
                              {QStringLiteral("ID_FIELD"), QStringLiteral("animal")},
                              {QStringLiteral("METHOD"), 5},
                              {QStringLiteral("CELL_SIZE"), 200.0},
                              {QStringLiteral("CONDITIONAL"), true},
                              {QStringLiteral("OUTPUT"), text_of(At("actual"))}};
    const QVariantMap results = Run("overlap", parameters);
    EXPECT_EQ(contents_of(At("actual")), contents_of(At("expected")));
    EXPECT_EQ(contents_of(At("actual")).size(), 4U);
    EXPECT_EQ(results.value(QStringLiteral("PAGE")).toString(), text_of(At("actual") / "WXL_OVERLAP_ANALYSIS.html"));
    const QgsVectorLayer common(results.value(QStringLiteral("COMMON")).toString(), QStringLiteral("common"));
    EXPECT_TRUE(common.isValid());
    EXPECT_GT(common.featureCount(), 0);
    EXPECT_THAT(Failure("overlap", parameters), HasSubstr("WXL_OVERLAP.csv exists: choose another folder"));
    parameters[QStringLiteral("OVERWRITE")] = true;
    EXPECT_EQ(Failure("overlap", parameters), "");
    call.emplace_back("--overwrite");
    Wxl(call);
    EXPECT_EQ(contents_of(At("actual")), contents_of(At("expected")));
    parameters[QStringLiteral("ADAPTIVE")] = true;
    EXPECT_EQ(Failure("overlap", parameters), "The ad hoc bandwidth is for fixed kernels of coordinates as they are.");
    parameters[QStringLiteral("METHOD")] = 4;
    EXPECT_EQ(Failure("overlap", parameters), "Give the bandwidth or proportion, a number above 0.");
}

TEST_F(ProcessingTest, Loaded_common_areas_have_their_style) {
    QgsProject::instance()->clear();
    m_context.setProject(QgsProject::instance());
    const QVariantMap results = Run("overlap", {{QStringLiteral("INPUT"), QString::fromStdString(Fixes())},
                                                {QStringLiteral("ID_FIELD"), QStringLiteral("animal")},
                                                {QStringLiteral("OUTPUT"), text_of(At("out"))}});
    const QString common = results.value(QStringLiteral("COMMON")).toString();
    ASSERT_TRUE(m_context.willLoadLayerOnCompletion(common));
    QgsVectorLayer layer(common, QStringLiteral("common"));
    m_context.layerToLoadOnCompletionDetails(common).postProcessor()->postProcessLayer(&layer, m_context, &m_feedback);
    const auto* renderer = dynamic_cast<const QgsSingleSymbolRenderer*>(layer.renderer());
    ASSERT_NE(renderer, nullptr);
    EXPECT_EQ(renderer->symbol()->color().name(), QStringLiteral("#d55e00"));
    EXPECT_TRUE(renderer->orderByEnabled());
}

/// The rows of a table of an algorithm as comma-separated lines of its attributes, empty for none.
std::vector<std::string> lines_of(const QgsVectorLayer& table) {
    std::vector<std::string> lines;
    QgsFeatureIterator rows = table.getFeatures();
    QgsFeature row;
    while (rows.nextFeature(row)) {
        std::string line;
        for (const QVariant& cell : row.attributes()) {
            const bool number = type_of(cell) == QMetaType::Double;
            line += (line.empty() ? "" : ",") + (cell.isNull() ? std::string()
                                                 : number      ? platform::NumberText(cell.toDouble())
                                                               : cell.toString().toStdString());
        }
        lines.push_back(line);
    }
    return lines;
}

std::vector<std::string> csv_lines(const fs::path& file) {
    std::vector<std::string> lines;
    std::ifstream source(file);
    for (std::string line; std::getline(source, line);) lines.push_back(line);
    lines.erase(lines.begin());
    return lines;
}

TEST_F(ProcessingTest, Minimum_convex_polygons_are_those_of_the_command_line) {
    Wxl({"-q", "mcp", Fixes(), "--id-field", "animal", "--percent", "100,50", "--csv", At("mcp.csv").string()});
    const QVariantMap results =
        Run("minimumconvexpolygons", {{QStringLiteral("INPUT"), QString::fromStdString(Fixes())},
                                      {QStringLiteral("ID_FIELD"), QStringLiteral("animal")},
                                      {QStringLiteral("PERCENTAGES"), QStringLiteral("100, 50, 100")},
                                      {QStringLiteral("OUTPUT"), QStringLiteral("memory:")}});
    auto* layer =
        qobject_cast<QgsVectorLayer*>(m_context.getMapLayer(results.value(QStringLiteral("OUTPUT")).toString()));
    ASSERT_NE(layer, nullptr);
    EXPECT_EQ(lines_of(*layer), csv_lines(At("mcp.csv")));
    EXPECT_EQ(layer->featureCount(), 8);
    QgsFeatureIterator rows = layer->getFeatures();
    QgsFeature row;
    while (rows.nextFeature(row)) {
        const double area = row.attribute(QStringLiteral("area")).toDouble();
        EXPECT_NEAR(row.geometry().area(), area, 1e-6 * area);
    }
    EXPECT_EQ(Failure("minimumconvexpolygons", {{QStringLiteral("INPUT"), QString::fromStdString(Fixes())},
                                                {QStringLiteral("ID_FIELD"), QStringLiteral("animal")},
                                                {QStringLiteral("PERCENTAGES"), QStringLiteral("101")},
                                                {QStringLiteral("OUTPUT"), QStringLiteral("memory:")}}),
              "Percentages: \"101\" is not a number above 0 and at most 100");
}

TEST_F(ProcessingTest, Area_curves_are_those_of_the_command_line) {
    for (const bool random : {false, true}) {
        std::vector<std::string> call = {
            "-q",           "curve", Fixes(),       "--id-field", "animal",
            "--time-field", "Time2", "--overwrite", "--csv",      At("curve.csv").string()};
        if (random) call.insert(call.end(), {"--order", "random", "--replicates", "5", "--seed", "7"});
        if (!random) call.insert(call.end(), {"--of", "kernel:90"});
        Wxl(call);
        QVariantMap parameters = {{QStringLiteral("INPUT"), QString::fromStdString(Fixes())},
                                  {QStringLiteral("ID_FIELD"), QStringLiteral("animal")},
                                  {QStringLiteral("TIME_FIELD"), QStringLiteral("Time2")},
                                  {QStringLiteral("ORDER"), random ? 1 : 0},
                                  {QStringLiteral("OF"), random ? 0 : 1},
                                  {QStringLiteral("REPLICATES"), 5},
                                  {QStringLiteral("SEED"), 7},
                                  {QStringLiteral("OUTPUT"), QStringLiteral("memory:")}};
        if (!random) parameters[QStringLiteral("PERCENT")] = 90.0;
        const QVariantMap results = Run("areacurve", parameters);
        auto* table =
            qobject_cast<QgsVectorLayer*>(m_context.getMapLayer(results.value(QStringLiteral("OUTPUT")).toString()));
        ASSERT_NE(table, nullptr);
        EXPECT_EQ(lines_of(*table), csv_lines(At("curve.csv")));
        EXPECT_GT(table->featureCount(), 100);
        EXPECT_THAT(m_feedback.Infos.toStdString(), HasSubstr("Freja: "));
    }
}

TEST_F(ProcessingTest, Ad_hoc_bandwidths_are_those_of_the_command_line) {
    Wxl({"-q", "kde", Fixes(), "--id-field", "animal", "--out", At("expected").string(), "--cell-size", "200",
         "--bandwidth", "adhoc", "--extent", "min"});
    QVariantMap parameters = KernelParameters("actual");
    parameters[QStringLiteral("METHOD")] = 5;
    parameters[QStringLiteral("CELL_SIZE")] = 200.0;
    parameters[QStringLiteral("EXTENT_MODE")] = 1;
    for (const char* name : {"LINES", "POLYGONS", "DONUTS", "HTML"}) parameters[QLatin1String(name)] = false;
    Run("kerneldensity", parameters);
    EXPECT_EQ(bytes_of(At("actual") / "1/w001001.adf"), bytes_of(At("expected") / "1/w001001.adf"));
    EXPECT_FALSE(bytes_of(At("actual") / "1/w001001.adf").empty());
    parameters[QStringLiteral("ADAPTIVE")] = true;
    EXPECT_EQ(Failure("kerneldensity", parameters),
              "The ad hoc bandwidth is for fixed kernels of coordinates as they are.");
}

TEST_F(ProcessingTest, Statistics_are_those_of_the_command_line) {
    const auto expected = StatsRows();
    const QVariantMap results = Run("statistics", {{QStringLiteral("INPUT"), QString::fromStdString(Fixes())},
                                                   {QStringLiteral("ID_FIELD"), QStringLiteral("animal")},
                                                   {QStringLiteral("OUTPUT"), QStringLiteral("memory:")}});
    EXPECT_EQ(results.value(QStringLiteral("ANIMALS")).toUInt(), expected.size());
    auto* table =
        qobject_cast<QgsVectorLayer*>(m_context.getMapLayer(results.value(QStringLiteral("OUTPUT")).toString()));
    ASSERT_NE(table, nullptr);
    ASSERT_EQ(static_cast<std::size_t>(table->featureCount()), expected.size());
    QgsFeatureIterator rows = table->getFeatures();
    QgsFeature row;
    for (const auto& one : expected) {
        ASSERT_TRUE(rows.nextFeature(row));
        EXPECT_EQ(row.attribute(QStringLiteral("id")).toString().toStdString(), one.at(0));
        EXPECT_EQ(row.attribute(QStringLiteral("count")).toString().toStdString(), one.at(1));
        const std::array names = {"schoener", "swihart_slade", "sd_x", "sd_y", "ratio", "href", "href_scaled"};
        for (std::size_t i = 0; i < names.size(); ++i) {
            const double value = std::stod(one.at(i + 2));
            EXPECT_NEAR(row.attribute(QLatin1String(names[i])).toDouble(), value, 1e-12 * std::abs(value)) << names[i];
        }
    }
}

class MovementProcessingTest : public ProcessingTest {
protected:
    void SetUp() override {
        AddWxlProvider();
        std::ofstream(At("track.csv")) << "animal,x,y,timestamp\n"
                                          "a,500000,5800000,2018-05-09 10:00:00\n"
                                          "a,500300,5800400,2018-05-09 10:10:00\n"
                                          "a,500300,5800400,2018-05-09 10:20:00\n"
                                          "a,501300,5800400,2018-05-09 10:20:00\n";
        Wxl({"-q", "import", At("track.csv").string(), Fixes(), "--from-crs", "EPSG:32632"});
    }

    QgsVectorLayer* Output(const QVariantMap& results) {
        return qobject_cast<QgsVectorLayer*>(m_context.getMapLayer(results.value(QStringLiteral("OUTPUT")).toString()));
    }

    QVariantMap Parameters() const {
        return {{QStringLiteral("INPUT"), QString::fromStdString(Fixes())},
                {QStringLiteral("OUTPUT"), QStringLiteral("memory:")}};
    }
};

TEST_F(MovementProcessingTest, Duplicates_of_time_and_place_are_left_out_of_a_copy) {
    const std::string before = bytes_of(Fixes());
    QVariantMap results = Run("removeduplicates", Parameters());
    EXPECT_EQ(results.value(QStringLiteral("COMPARED")).toInt(), 4);
    EXPECT_EQ(results.value(QStringLiteral("DELETED")).toInt(), 1);
    ASSERT_NE(Output(results), nullptr);
    EXPECT_EQ(Output(results)->featureCount(), 3);
    QVariantMap parameters = Parameters();
    parameters[QStringLiteral("BY")] = 1;
    results = Run("removeduplicates", parameters);
    EXPECT_EQ(results.value(QStringLiteral("DELETED")).toInt(), 1);
    // Of the two fixes at one place the first stays: 10:10.
    QStringList times;
    QgsFeatureIterator rows = Output(results)->getFeatures();
    QgsFeature row;
    while (rows.nextFeature(row)) times << row.attribute(QStringLiteral("Time1")).toString();
    EXPECT_EQ(times.join(QLatin1Char(' ')), "10:00:00 10:10:00 10:20:00");
    EXPECT_EQ(bytes_of(Fixes()), before);
}

// 300 east and 400 north in 600 s: 500 m.
TEST_F(MovementProcessingTest, Observation_fields_are_filled_in_a_copy) {
    QVariantMap cleaned = Run("removeduplicates", Parameters());
    QVariantMap parameters = Parameters();
    parameters[QStringLiteral("INPUT")] = QVariant::fromValue(Output(cleaned));
    const QVariantMap results = Run("observationfields", parameters);
    EXPECT_EQ(results.value(QStringLiteral("ROWS")).toInt(), 3);
    QgsFeatureIterator rows = Output(results)->getFeatures();
    QgsFeature row;
    ASSERT_TRUE(rows.nextFeature(row));
    ASSERT_TRUE(rows.nextFeature(row));
    EXPECT_EQ(row.attribute(QStringLiteral("T_Obs_Sec")).toInt(), 600);
    EXPECT_EQ(row.attribute(QStringLiteral("Dist")).toDouble(), 500.0);
    EXPECT_EQ(row.attribute(QStringLiteral("Me_per_Sec")).toDouble(), 0.8333);
    ASSERT_TRUE(rows.nextFeature(row));
    EXPECT_EQ(row.attribute(QStringLiteral("T_Cumul")).toInt(), 1200);
}

TEST_F(MovementProcessingTest, Fixes_of_the_same_time_are_an_error) {
    EXPECT_THAT(Failure("observationfields", Parameters()), HasSubstr("Divide by zero!!  Check your data."));
    EXPECT_TRUE(m_feedback.Infos.contains(QStringLiteral("Answer: yes"))) << m_feedback.Infos.toStdString();
}

TEST_F(MovementProcessingTest, Cancelled_algorithm_gives_no_layer) {
    m_feedback.cancel();
    EXPECT_TRUE(Run("removeduplicates", Parameters()).isEmpty());
}

TEST_F(MovementProcessingTest, Cancel_in_the_middle_gives_no_layer_and_changes_nothing) {
    {
        std::ofstream track(At("long.csv"));
        track << "animal,x,y,timestamp\n";
        const auto two = [](int number) { return (number < 10 ? "0" : "") + std::to_string(number); };
        for (int i = 0; i < 3000; ++i)
            track << "a," << 500000 + i << ",5800000,2018-05-" << 10 + i / 1440 << ' ' << two(i / 60 % 24) << ':'
                  << two(i % 60) << ":00\n";
    }
    const std::string fixes = At("long.shp").string();
    Wxl({"-q", "import", At("long.csv").string(), fixes, "--from-crs", "EPSG:32632"});
    const auto before = contents_of(m_folder.Path());
    for (const char* name : {"observationfields", "removeduplicates"}) {
        TestFeedback feedback;
        feedback.CancelAt = 10.0;
        const QgsProcessingAlgorithm* algorithm =
            QgsApplication::processingRegistry()->algorithmById(QStringLiteral("wxltools:") + QLatin1String(name));
        ASSERT_NE(algorithm, nullptr);
        const QVariantMap results = algorithm->run({{QStringLiteral("INPUT"), QString::fromStdString(fixes)},
                                                    {QStringLiteral("OUTPUT"), text_of(At("out.gpkg"))}},
                                                   m_context, &feedback, nullptr, {}, false);
        EXPECT_TRUE(feedback.isCanceled()) << name << ": it was running";
        EXPECT_LT(feedback.Progress, 90.0) << name << ": it went no further";
        EXPECT_TRUE(results.isEmpty()) << name;
        EXPECT_EQ(contents_of(m_folder.Path()), before) << name;
    }
}

// Two layers one after the other with one algorithm object, as a batch does.
TEST_F(ProcessingTest, Batch_of_two_layers_gives_both_folders) {
    for (const char* out : {"one", "two"}) Run("kerneldensity", KernelParameters(out));
    EXPECT_EQ(contents_of(At("one")), contents_of(At("two")));
}

TEST_F(MovementProcessingTest, Model_hands_the_output_of_one_algorithm_to_the_next) {
    QgsProcessingModelAlgorithm model(QStringLiteral("clean"), QStringLiteral("test"));
    QgsProcessingModelParameter input(QStringLiteral("FIXES"));
    model.addModelParameter(new QgsProcessingParameterFeatureSource(QStringLiteral("FIXES"), QStringLiteral("Fixes")),
                            input);
    QgsProcessingModelChildAlgorithm clean(QStringLiteral("wxltools:removeduplicates"));
    clean.setChildId(QStringLiteral("clean"));
    clean.addParameterSources(QStringLiteral("INPUT"),
                              {QgsProcessingModelChildParameterSource::fromModelParameter(QStringLiteral("FIXES"))});
    model.addChildAlgorithm(clean);
    QgsProcessingModelChildAlgorithm fields(QStringLiteral("wxltools:observationfields"));
    fields.setChildId(QStringLiteral("fields"));
    fields.addParameterSources(QStringLiteral("INPUT"), {QgsProcessingModelChildParameterSource::fromChildOutput(
                                                            QStringLiteral("clean"), QStringLiteral("OUTPUT"))});
    QgsProcessingModelOutput output(QStringLiteral("FILLED"));
    output.setChildOutputName(QStringLiteral("OUTPUT"));
    fields.setModelOutputs({{QStringLiteral("FILLED"), output}});
    model.addChildAlgorithm(fields);

    bool ok = false;
    const QVariantMap results = model.run({{QStringLiteral("FIXES"), QString::fromStdString(Fixes())},
                                           {QStringLiteral("fields:FILLED"), QStringLiteral("memory:")}},
                                          m_context, &m_feedback, &ok);
    ASSERT_TRUE(ok) << m_feedback.Errors.toStdString();
    auto* layer =
        qobject_cast<QgsVectorLayer*>(m_context.getMapLayer(results.value(QStringLiteral("fields:FILLED")).toString()));
    ASSERT_NE(layer, nullptr);
    EXPECT_EQ(layer->featureCount(), 3);
    EXPECT_GE(layer->fields().lookupField(QStringLiteral("Dist_Cumul")), 0);
}

}  // namespace
}  // namespace wxl::qgis
