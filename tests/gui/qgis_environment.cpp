#include "tests/gui/qgis_environment.h"

#include "tests/support/places.h"
#include "tests/support/scratch_folder.h"

#include <gtest/gtest.h>
#include <memory>
#include <QDir>

namespace wxl::tests {
namespace {

/// One QGIS application for the whole program, with a profile of its own and no screen.
class QgisEnvironment final : public testing::Environment {
public:
    void SetUp() override {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        qputenv("QGIS_PREFIX_PATH", "/usr");  // else QGIS looks for its providers beside the test program
        m_application =
            std::make_unique<QgsApplication>(m_argc, m_argv, true, QString::fromStdString(m_profile.Path().string()));
        QgsApplication::init(QString::fromStdString(m_profile.Path().string()));
        QgsApplication::initQgis();
    }

    void TearDown() override {
        QgsApplication::exitQgis();
        m_application.reset();
    }

private:
    ScratchFolder m_profile;
    char m_name[10] = "test_qgis";
    char* m_argv[2] = {m_name, nullptr};
    int m_argc = 1;
    std::unique_ptr<QgsApplication> m_application;
};

const auto* const kEnvironment = testing::AddGlobalTestEnvironment(new QgisEnvironment);

}  // namespace

void SaveScreenshot(QWidget& widget, const QString& name) {
    QDir folder(QString::fromStdString((ArtefactsFolder() / "screenshots").string()));
    folder.mkpath(QStringLiteral("."));
    ASSERT_TRUE(widget.grab().save(folder.filePath(name + QStringLiteral(".png"))));
}

void SettleWindows() {
    // A layout asks its parent's for one more turn.
    for (int turn = 0; turn < 5; ++turn) {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
    }
}

}  // namespace wxl::tests
