#pragma once
#include <functional>
#include <QDialog>
#include <QString>

class QTextBrowser;

namespace wxl::qgis {

/// The guide that comes with the plugin, in a window beside the one that asked for it; links lead from page to page.
class GuideWindow final : public QDialog {
public:
    explicit GuideWindow(QWidget* parent);

    /// Shows a page by its name without an ending ("movement-tools"), perhaps with "#" and a heading.
    void ShowPage(const QString& page);

private:
    QTextBrowser* m_browser;
};

/// A page of the guide as an HTML file for a browser, as a URL; written into the user's cache with all other pages when
/// it is not there yet. "" where there is no desktop or no place to write.
QString guide_file(const QString& page);

/// Opens the guide for a window, by F1 too; `page` tells which page belongs to what is on screen then.
class GuideOpener final : public QObject {
public:
    GuideOpener(QWidget& window, std::function<QString()> page);
    void Open();

    /// The same at a page of the caller's.
    void OpenAt(const QString& page);

private:
    QWidget& m_window;
    std::function<QString()> m_page;
    GuideWindow* m_guide = nullptr;
};

}  // namespace wxl::qgis
