#include "adapters/qgis/form_binder.h"

#include <gtest/gtest.h>
#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QGuiApplication>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QSlider>
#include <QTableWidget>
#include <QTest>
#include <QVBoxLayout>

namespace wxl::qgis {
namespace {

TEST(FormBinder, Typing_reaches_the_control_and_its_handler) {
    platform::TextBox control{"ab"};
    int changes = 0;
    QLineEdit edit;
    FormBinder binder;
    binder.Bind(edit, control, "txtR", [&] { ++changes; });
    binder.Refresh();
    EXPECT_EQ(edit.text(), "ab");
    EXPECT_EQ(edit.objectName(), "txtR");
    QTest::keyClicks(&edit, QStringLiteral("cd"));
    EXPECT_EQ(control.Text, "abcd");
    EXPECT_EQ(changes, 2);
}

TEST(FormBinder, Handler_that_cuts_a_text_is_shown_at_once) {
    platform::TextBox control;
    QLineEdit edit;
    FormBinder binder;
    binder.Bind(edit, control, "txtR", [&] { control.Text = control.Text.substr(0, 2); });
    QTest::keyClicks(&edit, QStringLiteral("xyz"));
    EXPECT_EQ(edit.text(), "xy");
}

TEST(FormBinder, Disabled_text_box_is_grey) {
    platform::TextBox control{"1", false, platform::BackColor::kButtonFace};
    QLineEdit edit;
    FormBinder binder;
    binder.Bind(edit, control, "txtBW");
    binder.Refresh();
    EXPECT_FALSE(edit.isEnabled());
    EXPECT_EQ(edit.palette().color(QPalette::Disabled, QPalette::Base),
              QPalette().color(QPalette::Active, QPalette::Button));
}

TEST(FormBinder, Check_box_calls_its_handler_once) {
    platform::CheckBox control{" Keep"};
    int clicks = 0;
    QCheckBox box;
    FormBinder binder;
    binder.Bind(box, control, "chkBnds", [&] { ++clicks; });
    binder.Refresh();
    EXPECT_EQ(box.text(), "Keep");
    QTest::mouseClick(&box, Qt::LeftButton, {}, QPoint(5, box.height() / 2));
    EXPECT_EQ(control.Value, 1);
    EXPECT_EQ(clicks, 1);
}

TEST(FormBinder, Option_buttons_follow_the_form) {
    platform::OptionButton a{"A", true};
    platform::OptionButton b{"B"};
    QRadioButton buttonA;
    QRadioButton buttonB;
    FormBinder binder;
    binder.Bind(buttonA, a, "optA", [&] { b.Value = false; });
    binder.Bind(buttonB, b, "optB", [&] { a.Value = false; });
    binder.Refresh();
    buttonB.click();
    EXPECT_FALSE(a.Value);
    EXPECT_TRUE(b.Value);
    EXPECT_FALSE(buttonA.isChecked());
    EXPECT_TRUE(buttonB.isChecked());
    buttonB.click();
    EXPECT_TRUE(buttonB.isChecked()) << "a chosen option stays chosen";
}

TEST(FormBinder, An_arrow_key_chooses_the_next_option_and_Tab_passes_all_of_them_at_once) {
    platform::OptionButton a{"A"};
    platform::OptionButton b{"B"};
    QWidget window;
    QVBoxLayout column(&window);
    QRadioButton buttonA;
    QRadioButton buttonB;
    QLineEdit after;
    FormBinder binder;
    binder.Bind(buttonA, a, "optA", [&] { b.Value = false; });
    binder.Bind(buttonB, b, "optB", [&] { a.Value = false; });
    binder.Refresh();
    for (QWidget* widget :
         {static_cast<QWidget*>(&buttonA), static_cast<QWidget*>(&buttonB), static_cast<QWidget*>(&after)})
        column.addWidget(widget);
    window.show();
    QApplication::setActiveWindow(&window);
    buttonA.setFocus();
    QTest::keyClick(&buttonA, Qt::Key_Space);
    EXPECT_TRUE(a.Value);
    QTest::keyClick(&buttonA, Qt::Key_Down);
    EXPECT_EQ(window.focusWidget(), &buttonB);
    EXPECT_TRUE(b.Value);
    EXPECT_FALSE(a.Value);
    EXPECT_FALSE(buttonA.isChecked());
    QTest::keyClick(&buttonB, Qt::Key_Up);
    EXPECT_TRUE(a.Value);
    QTest::keyClick(&buttonA, Qt::Key_Tab);
    EXPECT_EQ(window.focusWidget(), &after);
}

TEST(FormBinder, List_shows_new_items_without_calling_the_handler) {
    platform::ComboBox control;
    int clicks = 0;
    QComboBox list;
    FormBinder binder;
    binder.Bind(list, control, "cmbPntL", [&] { ++clicks; });
    control.Items = {"one", "two"};
    control.ListIndex = 1;
    binder.Refresh();
    EXPECT_EQ(list.currentText(), "two");
    EXPECT_EQ(clicks, 0);
    list.setCurrentIndex(0);
    EXPECT_EQ(control.ListIndex, 0);
    EXPECT_EQ(clicks, 1);
}

TEST(FormBinder, Table_and_progress_show_their_values) {
    platform::DataGrid grid;
    platform::ProgressBar bar{0.0, 4.0, 1.0};
    QTableWidget table;
    QProgressBar progress;
    FormBinder binder;
    binder.Bind(table, grid, "datagridIO");
    binder.Bind(progress, bar, "PBar");
    binder.Refresh();
    grid.Columns = {"ID", "Count"};
    grid.Rows = {{"w1", "12"}, {"w2", "N/A"}};
    binder.Refresh();
    EXPECT_EQ(table.rowCount(), 2);
    EXPECT_EQ(table.item(1, 1)->text(), "N/A");
    EXPECT_EQ(table.horizontalHeaderItem(0)->text(), "ID");
    EXPECT_EQ(progress.value(), 250);
}

TEST(FormBinder, Tables_show_five_digits_and_keep_all) {
    platform::DataGrid grid;
    QTableWidget table;
    FormBinder binder;
    binder.Bind(table, grid, "datagridHref");
    grid.Columns = {"ID", "HREF"};
    grid.Rows = {{"1.2345678", "396.30319"}, {"w2", "0.000123456789"}, {"w3", "123456.789"},
                 {"w4", "1234567"},          {"w5", "12.5"},           {"w6", "N/A"},
                 {"w7", "1.23456789e-12"}};
    binder.Refresh();
    const std::vector<std::string> shown = {"396.3", "0.00012346", "123457", "1234567", "12.5", "N/A", "1.2346e-12"};
    for (int row = 0; row < 7; ++row) {
        EXPECT_EQ(table.item(row, 1)->text().toStdString(), shown[static_cast<std::size_t>(row)]);
        const std::string& whole = grid.Rows[static_cast<std::size_t>(row)][1];
        const bool same = whole == shown[static_cast<std::size_t>(row)];
        EXPECT_EQ(table.item(row, 1)->toolTip().toStdString(), same ? "" : whole);
    }
    EXPECT_EQ(table.item(0, 0)->text(), "1.2345678") << "an animal's name is no number";
}

TEST(FormBinder, A_copy_of_table_cells_has_all_digits) {
    platform::DataGrid grid;
    QTableWidget table;
    FormBinder binder;
    binder.Bind(table, grid, "datagridHref");
    grid.Columns = {"ID", "x", "y"};
    grid.Rows = {{"w1", "396.30319", "2"}, {"w2", "0.000123456789", "3"}};
    binder.Refresh();
    table.setRangeSelected(QTableWidgetSelectionRange(0, 0, 1, 1), true);
    QTest::keyClick(&table, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), "w1\t396.30319\nw2\t0.000123456789");
}

TEST(FormBinder, Tab_leaves_a_table) {
    platform::DataGrid grid;
    QTableWidget table;
    FormBinder binder;
    binder.Bind(table, grid, "datagridIO");
    EXPECT_FALSE(table.tabKeyNavigation());
}

TEST(FormBinder, Button_runs_its_handler_and_others_show_what_it_changed) {
    platform::Button control{"Calculate"};
    platform::TextBox other;
    QPushButton button;
    QLineEdit edit;
    FormBinder binder;
    binder.Bind(button, control, "btnCalcIO", [&] { other.Text = "done"; });
    binder.Bind(edit, other, "txtStatus");
    binder.Refresh();
    button.click();
    EXPECT_EQ(edit.text(), "done");
}

TEST(FormBinder, Slider_moved_by_the_form_calls_no_handler) {
    platform::Slider control{0, 9, 0};
    int changes = 0;
    QSlider slider;
    FormBinder binder;
    binder.Bind(slider, control, "Slider", [&] { ++changes; });
    binder.Refresh();
    control.Value = 5;
    binder.Refresh();
    EXPECT_EQ(slider.value(), 5);
    EXPECT_EQ(changes, 0);
    slider.setValue(7);
    EXPECT_EQ(control.Value, 7);
    EXPECT_EQ(changes, 1);
}

}  // namespace
}  // namespace wxl::qgis
