#include "adapters/memory/memory_file_system.h"
#include "adapters/memory/memory_services.h"
#include "adapters/qgis/kde_dialog.h"
#include "adapters/qgis/qgis_map.h"
#include "tests/gui/qgis_environment.h"
#include "utilities/Utilities.h"

#include <array>
#include <cmath>
#include <gtest/gtest.h>
#include <map>
#include <numbers>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <qgsproject.h>
#include <qgsvectordataprovider.h>
#include <qgsvectorlayer.h>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QStackedWidget>
#include <QTabBar>
#include <QTableWidget>
#include <QTabWidget>
#include <QTest>

namespace wxl::qgis {
namespace {

/// The dialog over a project with one point layer: two wolves, 20 fixes each on circles of radius 300 m and 900 m.
class KdeDialogTest : public testing::Test {
protected:
    void SetUp() override {
        auto* layer =
            new QgsVectorLayer(QStringLiteral("Point?crs=EPSG:32632&field=animal:string(20)&field=Time2:integer"),
                               QStringLiteral("wolves"), QStringLiteral("memory"));
        QgsFeatureList features;
        for (int i = 0; i < 40; ++i) {
            const double angle = i * std::numbers::pi / 10.0;
            const double radius = i < 20 ? 300.0 : 900.0;
            QgsFeature feature(layer->fields());
            feature.setAttribute(0, i < 20 ? QStringLiteral("Asta") : QStringLiteral("Björn"));
            feature.setAttribute(1, i * 3600);
            feature.setGeometry(
                QgsGeometry::fromPointXY({500000.0 + radius * std::cos(angle), 5800000.0 + radius * std::sin(angle)}));
            features << feature;
        }
        ASSERT_TRUE(layer->dataProvider()->addFeatures(features));
        QgsProject::instance()->addMapLayer(layer);
        m_services.Messages = &m_messages;
        m_services.Dialogs = &m_dialogs;
        m_services.Host = &m_host;
        m_services.Files = &m_files;
        m_services.Folders = &m_folders;
        m_geodata = std::make_unique<utilities::Utilities>(m_services);
        m_geodata->ConnectToApplication(std::make_shared<QgisApplication>(Desktop{}));
        m_form = std::make_unique<kde_tool::frmKDE>(m_services, *m_geodata);
        m_dialog = std::make_unique<KdeDialog>(*m_form, m_host, nullptr);
        m_dialog->show();
    }

    void TearDown() override {
        m_dialog.reset();
        QgsProject::instance()->clear();
    }

    template <class Widget>
    Widget& Find(const char* name) {
        auto* widget = m_dialog->findChild<Widget*>(QLatin1String(name));
        if (!widget) throw std::runtime_error(std::string("no widget ") + name);
        return *widget;
    }

    /// No page needs more room than a screen of 1280 x 900 has, and no text is cut. Keeps a picture of every page.
    void CheckPages(const char* name) {
        const std::array<const char*, 4> pages = {"input-data", "kernel-settings", "bandwidth", "output-options"};
        const QString scale = QString::fromUtf8(qgetenv("QT_SCALE_FACTOR") + qgetenv("QT_SCREEN_SCALE_FACTORS"));
        for (int page = 0; page < 4; ++page) {
            ShowPage(page);
            QTest::qWait(100);
            const QString shot =
                QStringLiteral("%1-%2").arg(QLatin1String(name), QLatin1String(pages[static_cast<std::size_t>(page)]));
            tests::SaveScreenshot(*m_dialog, scale.isEmpty() ? shot : shot + QStringLiteral("-at-") + scale);
            for (const QWidget* widget : m_dialog->findChildren<QWidget*>()) {
                if (!widget->isVisible() || widget->parentWidget() == nullptr) continue;
                const std::string what = widget->objectName().toStdString() + " on page " + std::to_string(page);
                if (qobject_cast<const QAbstractButton*>(widget)) {
                    EXPECT_GE(widget->width(), widget->minimumSizeHint().width()) << what;
                }
                if (const auto* label = qobject_cast<const QLabel*>(widget)) {
                    const bool wraps = label->wordWrap();
                    EXPECT_GE(label->width(), wraps ? 0 : label->sizeHint().width()) << what;
                    EXPECT_GE(label->height(), wraps ? label->heightForWidth(label->width()) : 0) << what;
                }
                if (widget->objectName().isEmpty() || widget->objectName().startsWith(QLatin1String("qt_"))) continue;
                const QRect inDialog(widget->mapTo(m_dialog.get(), QPoint(0, 0)), widget->size());
                EXPECT_TRUE(m_dialog->rect().contains(inDialog)) << what;
            }
        }
        EXPECT_LE(m_dialog->width(), 1280);
        EXPECT_LE(m_dialog->height(), 860);
    }

    void ShowPage(int page) { Find<QTabWidget>("SSTab1").setCurrentIndex(page); }

    memory::MemoryMessages m_messages;
    memory::MemoryFileDialogs m_dialogs;
    std::shared_ptr<memory::MemoryDisk> m_disk = std::make_shared<memory::MemoryDisk>();
    memory::MemoryFileSystem m_files{m_disk};
    memory::MemoryFolders m_folders{m_disk};
    QgisHost m_host{{}};
    platform::Services m_services;
    std::unique_ptr<utilities::Utilities> m_geodata;
    std::unique_ptr<kde_tool::frmKDE> m_form;
    std::unique_ptr<KdeDialog> m_dialog;
};

TEST_F(KdeDialogTest, Lists_hold_the_layer_and_its_fields) {
    EXPECT_EQ(Find<QComboBox>("cmbPntL").currentText(), "wolves");
    EXPECT_EQ(Find<QComboBox>("cmbUIDFLD").findText(QStringLiteral("animal")), 0);
    EXPECT_EQ(Find<QComboBox>("cmbUIDFLD").findText(QStringLiteral("Time2")), 1);
}

TEST_F(KdeDialogTest, Every_control_of_the_form_has_a_widget) {
    for (const char* name :
         {"SSTab1",          "txtStatus",   "PBar",          "btnOK",       "btnExit",      "btnLoadSettings",
          "btnSaveSettings", "chkSilent",   "cmbPntL",       "chkUseSel",   "cmbUIDFLD",    "btnCalcIO",
          "datagridIO",      "btnIOSave",   "lblIO1",        "lblIO2",      "chkRescale",   "datagridVar",
          "optFixed",        "optAdaptive", "cmbKernelForm", "optBE_LSCV",  "optBE_BCV",    "optBE_HREF",
          "txtBW",           "txtPropHref", "optBE_MANUAL",  "optPropHref", "datagridHref", "txtOutFolder",
          "btnFolder",       "txtR",        "txtCellSize",   "txtScaling",  "chkVerbose",   "chkBnds",
          "txtBnds",         "chkLines",    "chkPolys",      "chkDonuts",   "optFull",      "txtBuffer",
          "optSmall",        "optExtRef",   "cmbExtRef"})
        EXPECT_NE(m_dialog->findChild<QWidget*>(QLatin1String(name)), nullptr) << name;
}

TEST_F(KdeDialogTest, Calculate_fills_the_independence_table) {
    Find<QComboBox>("cmbUIDFLD").setCurrentIndex(0);
    EXPECT_FALSE(Find<QPushButton>("btnIOSave").isEnabled());
    Find<QPushButton>("btnCalcIO").click();
    const auto& table = Find<QTableWidget>("datagridIO");
    ASSERT_EQ(table.rowCount(), 2);
    EXPECT_EQ(table.item(0, 0)->text(), "Asta");
    EXPECT_EQ(table.item(1, 0)->text(), QString::fromUtf8("Björn"));
    EXPECT_TRUE(Find<QPushButton>("btnIOSave").isEnabled());
}

TEST_F(KdeDialogTest, Choosing_options_switches_the_text_boxes) {
    ShowPage(2);
    EXPECT_FALSE(Find<QLineEdit>("txtBW").isEnabled());
    Find<QRadioButton>("optBE_MANUAL").click();
    EXPECT_TRUE(Find<QLineEdit>("txtBW").isEnabled());
    EXPECT_FALSE(Find<QRadioButton>("optBE_HREF").isChecked());
    Find<QRadioButton>("optPropHref").click();
    EXPECT_FALSE(Find<QLineEdit>("txtBW").isEnabled());
    EXPECT_TRUE(Find<QLineEdit>("txtPropHref").isEnabled());
}

TEST_F(KdeDialogTest, Prefix_is_cut_to_six_characters_with_a_warning) {
    ShowPage(3);
    auto& prefix = Find<QLineEdit>("txtR");
    QTest::keyClicks(&prefix, QStringLiteral("abcdefg"));
    EXPECT_EQ(prefix.text(), "abcdef");
    EXPECT_EQ(m_messages.Last().Title, "Warning");
}

TEST_F(KdeDialogTest, Changing_the_page_fills_variances_and_bandwidths) {
    Find<QComboBox>("cmbUIDFLD").setCurrentIndex(0);
    ShowPage(1);
    EXPECT_EQ(Find<QTableWidget>("datagridVar").rowCount(), 2);
    ShowPage(2);
    EXPECT_EQ(Find<QTableWidget>("datagridHref").rowCount(), 2);
    // 20 points on a circle of radius 900: variance 900^2 / 2 x 20 / 19, HREF = sqrt(variance) x 20^(-1/6) = 396.31...
    EXPECT_NEAR(m_form->LargestReferenceBandwidth(), 900.0 * std::sqrt(0.5 * 20.0 / 19.0) * std::pow(20.0, -1.0 / 6.0),
                1e-9);
}

TEST_F(KdeDialogTest, Nothing_is_cut_off_on_any_page) {
    Find<QComboBox>("cmbUIDFLD").setCurrentIndex(0);
    Find<QPushButton>("btnCalcIO").click();
    ShowPage(2);
    Find<QRadioButton>("optBE_LSCV").click();
    ASSERT_EQ(Find<QStackedWidget>("plotProfile").currentWidget()->objectName(), "plotProfileCurve");
    CheckPages("kde");
    EXPECT_GE(Find<QWidget>("plotProfileCurve").height(), 150) << "the plot can be read";
    const auto& table = Find<QTableWidget>("datagridHref");
    EXPECT_GE(table.viewport()->height(), 3 * table.rowHeight(0)) << "three animals stand above it";
}

TEST_F(KdeDialogTest, Nothing_is_cut_off_with_a_large_font_and_the_notice_of_degrees) {
    const QFont before = QApplication::font();
    QFont large = before;
    large.setPointSizeF(before.pointSizeF() * 1.25);
    QApplication::setFont(large);
    m_dialog = std::make_unique<KdeDialog>(*m_form, m_host, nullptr);
    m_form->lblDegrees.Caption =
        "This layer is in degrees. Cell size, bandwidths and areas need metres or another unit of length. Its UTM zone "
        "is 33S (EPSG:32733). Its points reach from zone 31 to zone 35: far from zone 33 distances are distorted.";
    m_form->btnReproject.Enabled = true;
    m_dialog->show();
    ShowPage(1);
    CheckPages("kde-large-font");
    m_dialog.reset();
    QApplication::setFont(before);
}

TEST_F(KdeDialogTest, Everything_that_takes_the_keyboard_has_a_tooltip) {
    for (const QWidget* widget : m_dialog->findChildren<QWidget*>()) {
        const bool ours = !widget->objectName().isEmpty() && !widget->objectName().startsWith(QLatin1String("qt_"));
        if (!ours || (widget->focusPolicy() & Qt::TabFocus) == 0 || qobject_cast<const QTabWidget*>(widget)) continue;
        if (qobject_cast<const QTabBar*>(widget->parentWidget())) continue;
        if (Find<QWidget>("plotProfile").isAncestorOf(widget)) continue;  // the plot's own parts
        EXPECT_NE(widget->toolTip(), "") << widget->objectName().toStdString();
    }
}

TEST_F(KdeDialogTest, Tab_key_goes_through_a_page_as_one_reads_it) {
    for (int page = 0; page < 4; ++page) {
        ShowPage(page);
        QTest::qWait(10);
        std::vector<QPoint> places;
        auto* tabs = Find<QTabWidget>("SSTab1").tabBar();
        for (QWidget* at = tabs->nextInFocusChain(); at != tabs; at = at->nextInFocusChain())
            if (at->isVisible() && at->isEnabled() && (at->focusPolicy() & Qt::TabFocus) != 0 &&
                !at->objectName().isEmpty() && at != m_dialog.get() && !qobject_cast<QTabWidget*>(at))
                places.push_back(at->mapTo(m_dialog.get(), at->rect().center()));
        ASSERT_GT(places.size(), 4U);
        for (std::size_t i = 1; i < places.size(); ++i) {
            const bool below = places[i].y() > places[i - 1].y() + 8;
            const bool beside = std::abs(places[i].y() - places[i - 1].y()) <= 8 && places[i].x() > places[i - 1].x();
            EXPECT_TRUE(below || beside) << "page " << page << ", stop " << i;
        }
    }
}

TEST_F(KdeDialogTest, Letters_with_Alt_are_unique_on_every_page) {
    for (int page = 0; page < 4; ++page) {
        ShowPage(page);
        QTest::qWait(10);
        std::map<QChar, int> letters;
        const auto count = [&](const QString& text) {
            const auto mark = text.indexOf(QLatin1Char('&'));
            if (mark >= 0) ++letters[text.at(mark + 1).toLower()];
        };
        const auto& tabs = Find<QTabWidget>("SSTab1");
        for (int i = 0; i < tabs.count(); ++i) count(tabs.tabText(i));
        for (const auto* button : m_dialog->findChildren<QAbstractButton*>())
            if (button->isVisible()) count(button->text());
        for (const auto* label : m_dialog->findChildren<QLabel*>())
            if (label->isVisible() && label->buddy()) count(label->text());
        EXPECT_GT(letters.size(), 10U);
        for (const auto& [letter, times] : letters) EXPECT_EQ(times, 1) << page << " " << letter.toLatin1();
    }
}

TEST_F(KdeDialogTest, Search_of_the_chosen_row_is_plotted) {
    Find<QComboBox>("cmbUIDFLD").setCurrentIndex(0);
    ShowPage(2);
    const auto& plot = Find<QStackedWidget>("plotProfile");
    EXPECT_EQ(Find<QLabel>("plotProfileHint").text(), "Choose LSCV or BCV: the scores of the search are plotted here.");
    EXPECT_EQ(plot.currentWidget()->objectName(), "plotProfileHint");
    Find<QRadioButton>("optBE_BCV").click();
    EXPECT_EQ(plot.currentWidget()->objectName(), "plotProfileCurve");
    EXPECT_EQ(plot.currentWidget()->accessibleName(), "Asta: BCV profile");
    auto& table = Find<QTableWidget>("datagridHref");
    EXPECT_EQ(table.currentRow(), 0);
    QTest::keyClick(&table, Qt::Key_Down);
    EXPECT_EQ(plot.currentWidget()->accessibleName(), QString::fromUtf8("Björn: BCV profile"));
    // HREF of 20 points on a circle of radius 900: 900 x sqrt(10 / 19) x 20^(-1/6) = 396.30.
    EXPECT_TRUE(plot.currentWidget()->accessibleDescription().contains(QStringLiteral("HREF is 396.3 ")))
        << plot.currentWidget()->accessibleDescription().toStdString();
    QTest::qWait(20);
    tests::SaveScreenshot(*m_dialog, QStringLiteral("kde-bandwidth-plot"));
    Find<QRadioButton>("optBE_HREF").click();
    EXPECT_EQ(plot.currentWidget()->objectName(), "plotProfileHint");
}

TEST_F(KdeDialogTest, Load_Settings_is_grey_during_a_run) {
    Find<QComboBox>("cmbUIDFLD").setCurrentIndex(0);
    m_form->SetOutputFolder("/absent");
    m_form->txtCellSize.Text = "50";
    std::vector<bool> during;
    // After the dialog's own turn, which is older.
    const auto token = m_host.OnYield([&] { during.push_back(Find<QPushButton>("btnLoadSettings").isEnabled()); });
    EXPECT_TRUE(Find<QPushButton>("btnLoadSettings").isEnabled());
    Find<QPushButton>("btnOK").click();
    EXPECT_EQ(m_messages.Last().Text,
              "Error: the output folder /absent does not exist. Please choose an existing folder on the Output Options "
              "tab.");
    EXPECT_EQ(during, std::vector<bool>{false});
    EXPECT_TRUE(Find<QPushButton>("btnLoadSettings").isEnabled());
}

TEST_F(KdeDialogTest, Frames_of_the_pages_carry_their_titles) {
    const std::array<QStringList, 4> titles = {
        QStringList{"Input", "Independence of observations"}, QStringList{"Standardization", "Kernel parameters"},
        QStringList{"Bandwidth Selection"}, QStringList{"Output", "Isopleths", "Extents"}};
    const auto& tabs = Find<QTabWidget>("SSTab1");
    ASSERT_EQ(tabs.count(), 4);
    for (std::size_t page = 0; page < titles.size(); ++page) {
        QStringList found;
        for (const auto* box : tabs.widget(static_cast<int>(page))->findChildren<QGroupBox*>()) found << box->title();
        found.sort();
        QStringList expected = titles[page];
        expected.sort();
        EXPECT_EQ(found, expected) << found.join(QStringLiteral(", ")).toStdString();
    }
}

TEST_F(KdeDialogTest, Exit_closes_the_dialog) {
    Find<QPushButton>("btnExit").click();
    EXPECT_FALSE(m_dialog->isVisible());
    EXPECT_FALSE(m_form->Visible);
}

}  // namespace
}  // namespace wxl::qgis
