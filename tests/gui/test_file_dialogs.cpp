#include "adapters/qgis/qgis_messages.h"
#include "tests/support/scratch_folder.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <QApplication>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>

namespace wxl::qgis {
namespace {

namespace fs = std::filesystem;

/// Types a name into the next file dialog and accepts it; the folder that the dialog began in.
struct Typist {
    explicit Typist(QString name) {
        QTimer::singleShot(50, [this, name = std::move(name)] {
            auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
            if (!dialog) return;
            Folder = dialog->directory().absolutePath().toStdString();
            dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->setText(name);
            const bool saves = dialog->acceptMode() == QFileDialog::AcceptSave;
            dialog->findChild<QDialogButtonBox*>()
                ->button(saves ? QDialogButtonBox::Save : QDialogButtonBox::Open)
                ->click();
        });
    }
    std::string Folder;
};

class FileDialogsTest : public testing::Test {
protected:
    FileDialogsTest() { QApplication::setAttribute(Qt::AA_DontUseNativeDialogs); }

    tests::ScratchFolder Project;
    fs::path Home = fs::canonical(Project.Path());
    QgisFileDialogs Dialogs{nullptr, [this] { return QString::fromStdString(Home.string()); }};
};

TEST_F(FileDialogsTest, They_start_in_the_folder_of_the_project_and_go_on_where_one_was) {
    fs::create_directory(Home / "out");
    Typist first(QString::fromStdString((Home / "out" / "a.txt").string()));
    EXPECT_EQ(Dialogs.SaveFile({.Title = "Save", .Filter = "Text files (*.txt)|*.txt"}), Home / "out" / "a.txt");
    EXPECT_EQ(first.Folder, Home.string());
    Typist second(QStringLiteral("b"));
    EXPECT_EQ(Dialogs.SaveFile({.Title = "Save", .Filter = "Text files (*.txt)|*.txt"}), Home / "out" / "b.txt");
    EXPECT_EQ(second.Folder, (Home / "out").string());
    // Another project.
    const tests::ScratchFolder other;
    Home = fs::canonical(other.Path());
    Typist third(QStringLiteral("c"));
    EXPECT_EQ(Dialogs.SaveFile({.Title = "Save", .Filter = "Text files (*.txt)|*.txt"}), Home / "c.txt");
}

TEST_F(FileDialogsTest, A_name_gets_the_ending_of_the_filter_where_it_has_none) {
    Typist bare(QStringLiteral("settings"));
    EXPECT_EQ(Dialogs.SaveFile({.Title = "Save", .Filter = "Text files (*.txt)|*.txt"}), Home / "settings.txt");
    Typist whole(QStringLiteral("settings.cfg"));
    EXPECT_EQ(Dialogs.SaveFile({.Title = "Save", .Filter = "Text files (*.txt)|*.txt"}), Home / "settings.cfg");
    Typist any(QStringLiteral("settings"));
    EXPECT_EQ(Dialogs.SaveFile({.Title = "Save", .Filter = "All files (*.*)|*.*"}), Home / "settings");
}

TEST_F(FileDialogsTest, Files_and_folders_that_exist_are_opened) {
    std::ofstream(Home / "a.txt") << "x";
    Typist file(QStringLiteral("a.txt"));
    EXPECT_EQ(Dialogs.OpenFile({.Title = "Open", .Filter = "Text files (*.txt)|*.txt"}), Home / "a.txt");
    fs::create_directory(Home / "results");
    Typist folder(QString::fromStdString((Home / "results").string()));
    EXPECT_EQ(Dialogs.ChooseFolder("Folder"), Home / "results");
}

}  // namespace
}  // namespace wxl::qgis
