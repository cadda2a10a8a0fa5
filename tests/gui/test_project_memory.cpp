#include "adapters/qgis/project_memory.h"
#include "analysis/animal_run.h"
#include "analysis/settings_text.h"
#include "tests/gui/qgis_environment.h"
#include "tests/support/scratch_folder.h"

#include <gtest/gtest.h>
#include <qgsproject.h>
#include <qgsvectorlayer.h>

namespace wxl::qgis {
namespace {

using analysis::Settings;

class ProjectMemoryTest : public testing::Test {
protected:
    ProjectMemoryTest() {
        m_layer = new QgsVectorLayer(QStringLiteral("Point?crs=EPSG:32632&field=animal:integer"),
                                     QStringLiteral("wolves"), QStringLiteral("memory"));
        QgsProject::instance()->addMapLayer(m_layer);
    }
    ~ProjectMemoryTest() override { QgsProject::instance()->clear(); }

    static Settings Everything() {
        Settings settings;
        settings.LayerName = "wolves";
        settings.IdField = "animal";
        settings.SelectedOnly = settings.Rescale = settings.Verbose = settings.Silent = settings.Html = true;
        settings.FixedKernel = false;
        settings.Method = analysis::BandwidthMethod::kProportion;
        settings.Bandwidths = analysis::typed_numbers("100, 200");
        settings.Proportions = analysis::typed_numbers("0.5, 1");
        settings.OutputFolder = "/data/Bären";
        settings.Prefix = "ud";
        settings.Cells = analysis::cell_size_of("30.4");
        settings.ScalingFactor = analysis::typed_number("1000");
        settings.Mode = analysis::ExtentMode::kReference;
        settings.Buffer = analysis::typed_number("17");
        settings.ReferenceName = "dem";
        settings.Isopleths = settings.Lines = settings.Donuts = true;
        settings.Percentages = analysis::typed_numbers("95,50");
        return settings;
    }

    static void Run(const Settings& settings) {
        analysis::RunFrame frame;
        frame.Wanted = settings;
        ProjectMemory().RunBegins(frame, {});
    }

    QgsVectorLayer* m_layer;
    tests::ScratchFolder m_folder;
};

TEST_F(ProjectMemoryTest, A_project_without_a_run_has_no_last_settings) {
    EXPECT_EQ(ProjectMemory().LastSettings(), std::nullopt);
}

TEST_F(ProjectMemoryTest, Settings_come_back_as_they_were) {
    Run(Everything());
    EXPECT_EQ(ProjectMemory().LastSettings(), Everything());
    Settings plain;
    plain.LayerName = "wolves";
    Run(plain);
    EXPECT_EQ(ProjectMemory().LastSettings()->Method, analysis::BandwidthMethod::kHref);
    EXPECT_FALSE(ProjectMemory().LastSettings()->Rescale);
    EXPECT_TRUE(ProjectMemory().LastSettings()->FixedKernel);
}

TEST_F(ProjectMemoryTest, They_are_saved_with_the_project) {
    Run(Everything());
    const QString file = QString::fromStdString((m_folder.Path() / "project.qgz").string());
    ASSERT_TRUE(QgsProject::instance()->write(file));
    QgsProject::instance()->clear();
    EXPECT_EQ(ProjectMemory().LastSettings(), std::nullopt);
    ASSERT_TRUE(QgsProject::instance()->read(file));
    EXPECT_EQ(ProjectMemory().LastSettings(), Everything());
}

TEST_F(ProjectMemoryTest, A_layer_that_was_renamed_is_found_by_its_new_name) {
    Run(Everything());
    m_layer->setName(QStringLiteral("wolves of 2024"));
    EXPECT_EQ(ProjectMemory().LastSettings()->LayerName, "wolves of 2024");
    QgsProject::instance()->removeMapLayer(m_layer);
    EXPECT_EQ(ProjectMemory().LastSettings()->LayerName, "wolves") << "for the sentence that it is gone";
}

TEST_F(ProjectMemoryTest, Fields_of_animals_are_found_by_their_usual_names) {
    EXPECT_EQ(ProjectMemory().AnimalField({"fid", "animal", "Time2"}), 1U);
    EXPECT_EQ(ProjectMemory().AnimalField({"a", "b"}), std::nullopt);
}

}  // namespace
}  // namespace wxl::qgis
