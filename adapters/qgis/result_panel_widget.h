#pragma once
#include "kde_tool/result_panel.h"

#include <functional>
#include <QFrame>
#include <QPlainTextEdit>
#include <QPushButton>

class QLabel;

namespace wxl::qgis {

/// A ResultPanel on screen: headline with a sign and a coloured edge, the lines below it, and buttons that open what a
/// run wrote. Hidden while there is no headline.
class ResultPanelWidget final : public QFrame {
public:
    ResultPanelWidget();

    void Show(const kde_tool::ResultPanel& panel);

    /// Called by "Zoom to results", which is there only with it.
    void SetZoom(std::function<void(const kde_tool::ResultPanel&)> zoom) { m_zoom = std::move(zoom); }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void ShowLines();
    void ShowButtons();

    kde_tool::ResultPanel m_panel;
    std::function<void(const kde_tool::ResultPanel&)> m_zoom;
    QLabel* m_sign;
    QLabel* m_headline;
    QPlainTextEdit* m_lines;
    QPushButton* m_page;
    QPushButton* m_folder;
    QPushButton* m_zoomButton;
};

}  // namespace wxl::qgis
