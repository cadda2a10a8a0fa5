#include "adapters/memory/memory_file_system.h"
#include "adapters/memory/memory_services.h"
#include "adapters/qgis/curve_plot.h"
#include "adapters/qgis/kde_dialog.h"
#include "adapters/qgis/qgis_map.h"
#include "tests/gui/qgis_environment.h"
#include "utilities/Utilities.h"

#include <array>
#include <cmath>
#include <gtest/gtest.h>
#include <map>
#include <numbers>
#include <QAccessible>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDesktopServices>
#include <QGroupBox>
#include <qgsproject.h>
#include <qgsvectordataprovider.h>
#include <qgsvectorlayer.h>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollArea>
#include <QStackedWidget>
#include <QTabBar>
#include <QTableWidget>
#include <QTabWidget>
#include <QTest>
#include <QTextBrowser>
#include <QUrl>
#include <set>

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
            tests::SettleWindows();
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
                // What is on a page may be scrolled to, but only up and down.
                const auto* area = qobject_cast<const QScrollArea*>(Find<QTabWidget>("SSTab1").widget(page));
                const QWidget* frame = area->widget()->isAncestorOf(widget) ? area->widget() : m_dialog.get();
                EXPECT_TRUE(frame->rect().contains(QRect(widget->mapTo(frame, QPoint(0, 0)), widget->size()))) << what;
                EXPECT_LE(area->widget()->width(), area->viewport()->width()) << what;
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
    for (const char* name : {"SSTab1",
                             "txtStatus",
                             "PBar",
                             "btnOK",
                             "btnExit",
                             "btnLoadSettings",
                             "btnSaveSettings",
                             "btnSuggest",
                             "btnLastSettings",
                             "chkSilent",
                             "cmbPntL",
                             "chkUseSel",
                             "cmbUIDFLD",
                             "btnCalcIO",
                             "datagridIO",
                             "btnIOSave",
                             "lblIO1",
                             "lblIO2",
                             "chkRescale",
                             "datagridVar",
                             "optFixed",
                             "optAdaptive",
                             "cmbKernelForm",
                             "optBE_LSCV",
                             "optBE_BCV",
                             "optBE_HREF",
                             "txtBW",
                             "txtPropHref",
                             "optBE_MANUAL",
                             "optPropHref",
                             "datagridHref",
                             "txtOutFolder",
                             "btnFolder",
                             "txtR",
                             "txtCellSize",
                             "txtScaling",
                             "chkVerbose",
                             "chkBnds",
                             "txtBnds",
                             "chkLines",
                             "chkPolys",
                             "chkDonuts",
                             "optFull",
                             "txtBuffer",
                             "optSmall",
                             "optExtRef",
                             "cmbExtRef"})
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

// Full HD at 200 %, less the window's frame and a panel; 1366 x 768 at 125 % is 1093 x 614.
TEST_F(KdeDialogTest, Pages_scroll_on_a_low_screen_and_the_footer_stays) {
    Find<QComboBox>("cmbUIDFLD").setCurrentIndex(0);
    m_dialog->resize(944, 470);
    tests::SettleWindows();
    EXPECT_LE(m_dialog->width(), 944);
    EXPECT_LE(m_dialog->height(), 470);
    for (int page = 0; page < 4; ++page) {
        ShowPage(page);
        tests::SettleWindows();
        auto& area = *qobject_cast<QScrollArea*>(Find<QTabWidget>("SSTab1").widget(page));
        tests::SaveScreenshot(*m_dialog, QStringLiteral("kde-low-screen-%1").arg(page));
        for (const char* name : {"btnOK", "btnExit", "btnHelp", "btnLoadSettings", "txtStatus", "PBar"}) {
            const auto& widget = Find<QWidget>(name);
            EXPECT_TRUE(m_dialog->rect().contains(QRect(widget.mapTo(m_dialog.get(), QPoint(0, 0)), widget.size())))
                << name;
        }
        for (auto* widget : area.widget()->findChildren<QWidget*>()) {
            if (!widget->isVisible() || (widget->focusPolicy() & Qt::TabFocus) == 0 || !widget->isEnabled()) continue;
            widget->setFocus(Qt::TabFocusReason);
            area.ensureWidgetVisible(widget);
            EXPECT_TRUE(
                area.viewport()->rect().intersects(QRect(widget->mapTo(area.viewport(), QPoint(0, 0)), widget->size())))
                << widget->objectName().toStdString();
        }
    }
}

TEST_F(KdeDialogTest, A_large_screen_gives_its_room_to_the_tables) {
    Find<QComboBox>("cmbUIDFLD").setCurrentIndex(0);
    for (const auto& [page, name] :
         {std::pair{0, "datagridIO"}, std::pair{1, "datagridVar"}, std::pair{2, "datagridHref"}}) {
        ShowPage(page);
        m_dialog->resize(700, 760);
        tests::SettleWindows();
        const int before = Find<QTableWidget>(name).height();
        m_dialog->resize(1400, 1160);
        tests::SettleWindows();
        EXPECT_GE(Find<QTableWidget>(name).height(), before + 130) << name;
        tests::SaveScreenshot(*m_dialog, QStringLiteral("kde-large-screen-%1").arg(page));
    }
}

TEST_F(KdeDialogTest, Everything_that_takes_the_keyboard_has_a_name_for_screen_readers) {
    for (QWidget* widget : m_dialog->findChildren<QWidget*>()) {
        if ((widget->focusPolicy() & Qt::TabFocus) == 0 || widget->objectName().startsWith(QLatin1String("qt_")))
            continue;
        if (Find<QWidget>("plotProfile").isAncestorOf(widget)) continue;  // named by what it shows
        QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(widget);
        ASSERT_NE(accessible, nullptr);
        const bool isTabs = qobject_cast<const QTabWidget*>(widget) || qobject_cast<const QTabBar*>(widget);
        if (!isTabs) {
            EXPECT_NE(accessible->text(QAccessible::Name), "")
                << widget->objectName().toStdString() << " " << widget->metaObject()->className();
        }
    }
}

TEST_F(KdeDialogTest, F1_and_the_help_button_open_the_guide_at_the_page_on_screen) {
    ShowPage(2);
    m_dialog->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(m_dialog.get()));
    QTest::keyClick(m_dialog.get(), Qt::Key_F1);
    auto* guide = m_dialog->findChild<QDialog*>(QStringLiteral("guide"));
    ASSERT_NE(guide, nullptr);
    auto* text = guide->findChild<QTextBrowser*>();
    EXPECT_TRUE(guide->isVisible());
    EXPECT_EQ(text->source().toString(), "qrc:/wxl/guide/choosing-a-bandwidth.md");
    EXPECT_TRUE(text->toPlainText().contains(QStringLiteral("bandwidth"))) << text->toPlainText().toStdString();
    tests::SaveScreenshot(*guide, QStringLiteral("guide-window"));
    ShowPage(0);
    Find<QPushButton>("btnHelp").click();
    EXPECT_EQ(text->source().toString(), "qrc:/wxl/guide/first-analysis-qgis.md");
    EXPECT_GT(text->toPlainText().size(), 500);
    guide->reject();
}

TEST_F(KdeDialogTest, Significant_autocorrelation_leads_to_its_remedy_in_the_guide) {
    ShowPage(0);
    auto& link = Find<QLabel>("lblRemedy");
    EXPECT_TRUE(link.isVisible());
    emit link.linkActivated(QStringLiteral("which-estimator"));
    auto* guide = m_dialog->findChild<QDialog*>(QStringLiteral("guide"));
    ASSERT_NE(guide, nullptr);
    auto* text = guide->findChild<QTextBrowser*>();
    EXPECT_EQ(text->source().toString(), "qrc:/wxl/guide/which-estimator.md");
    EXPECT_TRUE(text->toPlainText().contains(QStringLiteral("AKDE")));
    guide->reject();
}

TEST(CurveColours, Are_read_on_light_dark_and_high_contrast_grounds) {
    for (const QColor& ground :
         {QColor(Qt::white), QColor(0x2d, 0x2d, 0x2d), QColor(Qt::black), QColor(0xff, 0xff, 0xe0)})
        for (const QColor& wanted : {QColor(0x1b, 0x6c, 0xa8), QColor(0xd6, 0x45, 0x3d), QColor(0x80, 0x80, 0x80)})
            EXPECT_GE(ContrastOf(ground, ReadableOn(ground, wanted)), 4.5)
                << ground.name().toStdString() << " " << wanted.name().toStdString();
    // The relative luminance of pure red is 0.2126: 1.05 / 0.2626.
    EXPECT_NEAR(ContrastOf(Qt::white, Qt::red), 3.9985, 1e-4);
    EXPECT_EQ(ContrastOf(Qt::black, Qt::white), 21.0);
    EXPECT_EQ(ReadableOn(Qt::white, QColor(0x1b, 0x6c, 0xa8)), QColor(0x1b, 0x6c, 0xa8));
}

TEST_F(KdeDialogTest, The_plot_follows_the_palette) {
    Find<QComboBox>("cmbUIDFLD").setCurrentIndex(0);
    ShowPage(2);
    Find<QRadioButton>("optBE_LSCV").click();
    QPalette dark;
    dark.setColor(QPalette::Window, QColor(0x2d, 0x2d, 0x2d));
    dark.setColor(QPalette::Base, QColor(0x20, 0x20, 0x20));
    dark.setColor(QPalette::AlternateBase, QColor(0x28, 0x28, 0x28));
    dark.setColor(QPalette::Button, QColor(0x3a, 0x3a, 0x3a));
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) dark.setColor(role, Qt::white);
    const QPalette before = QApplication::palette();
    QApplication::setPalette(dark);
    tests::SettleWindows();
    const QImage picture = Find<QWidget>("plotProfileCurve").grab().toImage();
    const QRgb curve = ReadableOn(QColor(0x20, 0x20, 0x20), QColor(0x1b, 0x6c, 0xa8)).rgb();
    int ground = 0;
    int drawn = 0;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x) {
            ground += picture.pixel(x, y) == qRgb(0x20, 0x20, 0x20);
            drawn += picture.pixel(x, y) == curve;
        }
    tests::SaveScreenshot(*m_dialog, QStringLiteral("kde-bandwidth-dark"));
    EXPECT_EQ(Find<QLineEdit>("txtStatus").palette().color(QPalette::Base), QColor(0x20, 0x20, 0x20));
    EXPECT_EQ(Find<QLineEdit>("txtBW").palette().color(QPalette::Base), QColor(0x3a, 0x3a, 0x3a)) << "greyed";
    const QColor link = ReadableOn(QColor(0x2d, 0x2d, 0x2d), dark.color(QPalette::Link));
    EXPECT_TRUE(Find<QLabel>("lblRemedy").text().contains(link.name()));
    QApplication::setPalette(before);
    tests::SettleWindows();
    EXPECT_GT(ground, picture.width() * picture.height() / 4);
    EXPECT_GT(drawn, 50);
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
    m_dialog->resize(800, 1000);  // nothing is scrolled away
    for (int page = 0; page < 4; ++page) {
        ShowPage(page);
        tests::SettleWindows();
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
        tests::SettleWindows();
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
    tests::SettleWindows();
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

TEST_F(KdeDialogTest, Empty_fields_show_the_suggestions_in_grey) {
    struct Advice final : kde_tool::IFormAdvice {
        std::optional<std::size_t> AnimalField(const std::vector<std::string>&) const override { return 0; }
        bool CanWrite(const std::filesystem::path&) const override { return true; }
        std::optional<analysis::Settings> LastSettings() const override { return std::nullopt; }
    } advice;
    m_form->Advice = &advice;
    m_dialog = std::make_unique<KdeDialog>(*m_form, m_host, nullptr);
    m_dialog->show();
    EXPECT_EQ(Find<QComboBox>("cmbUIDFLD").placeholderText(), "suggested: animal");
    EXPECT_EQ(Find<QComboBox>("cmbUIDFLD").currentIndex(), -1);
    const QImage hinted = Find<QComboBox>("cmbUIDFLD").grab().toImage();
    Find<QComboBox>("cmbUIDFLD").setPlaceholderText(QString());
    EXPECT_NE(Find<QComboBox>("cmbUIDFLD").grab().toImage(), hinted) << "the hint is drawn";
    Find<QComboBox>("cmbUIDFLD").setCurrentIndex(0);
    ShowPage(3);
    // HREF of the narrower animal is 132.10: a tenth of it is nearest to 10.
    EXPECT_EQ(Find<QLineEdit>("txtCellSize").placeholderText(), "suggested: 10");
    EXPECT_EQ(Find<QLineEdit>("txtCellSize").text(), "");
    QTest::qWait(20);
    tests::SaveScreenshot(*m_dialog, QStringLiteral("kde-hints"));
    EXPECT_FALSE(Find<QPushButton>("btnLastSettings").isEnabled());
    Find<QPushButton>("btnSuggest").click();
    EXPECT_EQ(Find<QLineEdit>("txtCellSize").text(), "10");
    EXPECT_TRUE(Find<QCheckBox>("chkPolys").isChecked());
    EXPECT_TRUE(Find<QRadioButton>("optSmall").isChecked());
    m_dialog.reset();
}

TEST_F(KdeDialogTest, The_panel_tells_how_a_run_ended) {
    EXPECT_FALSE(Find<QFrame>("panelResults").isVisible());
    m_form->Panel.Headline = "3 of 4 animals done";
    m_form->Panel.Kind = kde_tool::ResultPanel::Look::kPartly;
    m_form->Panel.Lines = {
        "Loke: the bandwidth 12 is smaller than the cell size 50. Choose cells of at most 12, or a "
        "wider bandwidth."};
    m_form->Panel.Folder = "/out/results";
    m_form->Panel.Extent = {0.0, 0.0, 1.0, 1.0};
    int zooms = 0;
    m_dialog->OnZoom([&](const kde_tool::ResultPanel&) { ++zooms; });
    m_dialog->resize(944, 470);
    m_dialog->Refresh();
    QTest::qWait(20);
    EXPECT_TRUE(Find<QFrame>("panelResults").isVisible());
    EXPECT_EQ(Find<QLabel>("lblHeadline").text(), "3 of 4 animals done");
    EXPECT_TRUE(Find<QPlainTextEdit>("txtOutcome").toPlainText().startsWith(QStringLiteral("Loke: the bandwidth")));
    EXPECT_FALSE(Find<QPushButton>("btnOpenPage").isEnabled()) << "there is no page";
    Find<QPushButton>("btnZoom").click();
    EXPECT_EQ(zooms, 1);
    QTextBrowser desktop;  // takes what is opened in its place
    QDesktopServices::setUrlHandler(QStringLiteral("file"), &desktop, "setSource");
    Find<QPushButton>("btnOpenFolder").click();
    EXPECT_EQ(desktop.source().toLocalFile(), "/out/results");
    m_form->Panel.Page = "/out/results/page.html";
    m_dialog->Refresh();
    Find<QPushButton>("btnOpenPage").click();
    EXPECT_EQ(desktop.source().toLocalFile(), "/out/results/page.html");
    QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
    for (const char* name : {"btnOK", "btnZoom", "txtOutcome"}) {
        const auto& widget = Find<QWidget>(name);
        EXPECT_TRUE(m_dialog->rect().contains(QRect(widget.mapTo(m_dialog.get(), QPoint(0, 0)), widget.size())))
            << name;
    }
    tests::SaveScreenshot(*m_dialog, QStringLiteral("kde-panel-low-screen"));
    m_form->Panel = {};
    m_dialog->Refresh();
    EXPECT_FALSE(Find<QFrame>("panelResults").isVisible());
}

TEST_F(KdeDialogTest, The_panel_has_a_colour_and_a_sign_for_each_ending) {
    using Look = kde_tool::ResultPanel::Look;
    std::set<QRgb> edges;
    for (const Look look : {Look::kNote, Look::kDone, Look::kPartly, Look::kFailure}) {
        m_form->Panel = {.Kind = look, .Headline = "Headline"};
        m_dialog->Refresh();
        QTest::qWait(10);
        edges.insert(Find<QFrame>("panelResults").grab().toImage().pixel(1, 10));
    }
    EXPECT_EQ(edges.size(), 4U);
}

TEST_F(KdeDialogTest, What_a_run_could_not_do_is_told_beside_the_field_while_typing) {
    Find<QComboBox>("cmbUIDFLD").setCurrentIndex(0);
    ShowPage(3);
    EXPECT_TRUE(Find<QLabel>("problem_txtOutFolder").isHidden()) << "nothing is said of empty fields before OK";
    Find<QCheckBox>("chkBnds").click();
    Find<QCheckBox>("chkPolys").click();
    auto& percentages = Find<QLineEdit>("txtBnds");
    const QImage before = percentages.grab().toImage();
    percentages.clear();
    QTest::keyClicks(&percentages, QStringLiteral("95, 150"));
    auto& sentence = Find<QLabel>("problem_txtBnds");
    EXPECT_TRUE(sentence.isVisible());
    EXPECT_EQ(sentence.text(), "\"150\" is not a number above 0 and up to 100.");
    EXPECT_EQ(percentages.accessibleDescription(), sentence.text());
    const QColor edge = percentages.grab().toImage().pixelColor(1, percentages.height() / 2);
    EXPECT_GT(edge.red(), 150);
    EXPECT_LT(edge.green(), 100);
    EXPECT_LT(
        before.pixelColor(1, percentages.height() / 2).red() - before.pixelColor(1, percentages.height() / 2).blue(),
        30)
        << "grey before";
    QTest::keyClicks(&Find<QLineEdit>("txtCellSize"), QStringLiteral("200"));
    EXPECT_EQ(Find<QLabel>("problem_txtCellSize").text(),
              "Cells must not be larger than the bandwidth, and the smallest is 132.1.");
    EXPECT_EQ(Find<QLabel>("lblBuffer").text(), "1387 on every side");
    Find<QLineEdit>("txtBuffer").setText(QStringLiteral("100"));
    EXPECT_EQ(Find<QLabel>("lblBuffer").text(),
              "100 on every side; OK asks whether to use 1387 instead, 3.5 times the widest bandwidth");
    QTest::qWait(20);
    tests::SaveScreenshot(*m_dialog, QStringLiteral("kde-problems"));
    Find<QRadioButton>("optSmall").click();
    EXPECT_TRUE(Find<QLabel>("lblBuffer").isHidden()) << "it leaves no gap";
    percentages.setText(QStringLiteral("95"));
    EXPECT_TRUE(sentence.isHidden());
    EXPECT_EQ(percentages.accessibleDescription(), "");
}

TEST_F(KdeDialogTest, OK_goes_to_the_first_field_with_a_problem_after_the_box) {
    ShowPage(3);
    m_dialog->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(m_dialog.get()));
    Find<QPushButton>("btnOK").click();
    ASSERT_EQ(m_messages.Boxes().size(), 1U);
    EXPECT_EQ(m_messages.Last().Text,
              "Error: please choose the field that names the animals (unique animal ID) on the Input Data tab.");
    EXPECT_EQ(Find<QTabWidget>("SSTab1").currentIndex(), 0);
    EXPECT_TRUE(Find<QComboBox>("cmbUIDFLD").hasFocus());
    EXPECT_EQ(Find<QLabel>("problem_cmbUIDFLD").text(), "Choose the field that names the animals.");
    Find<QComboBox>("cmbUIDFLD").setCurrentIndex(0);
    EXPECT_TRUE(Find<QLabel>("problem_cmbUIDFLD").isHidden());
    Find<QPushButton>("btnOK").click();
    EXPECT_EQ(Find<QTabWidget>("SSTab1").currentIndex(), 3);
    EXPECT_TRUE(Find<QLineEdit>("txtOutFolder").hasFocus());
    m_disk->AddFolder("/out");
    m_form->SetOutputFolder("/out");
    Find<QPushButton>("btnOK").click();
    EXPECT_TRUE(Find<QLineEdit>("txtCellSize").hasFocus());
    EXPECT_EQ(m_messages.Boxes().size(), 3U);
    QTest::qWait(20);
    tests::SaveScreenshot(*m_dialog, QStringLiteral("kde-focus"));
}

TEST_F(KdeDialogTest, Exit_closes_the_dialog) {
    Find<QPushButton>("btnExit").click();
    EXPECT_FALSE(m_dialog->isVisible());
    EXPECT_FALSE(m_form->Visible);
}

}  // namespace
}  // namespace wxl::qgis
