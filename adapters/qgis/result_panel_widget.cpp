#include "adapters/qgis/result_panel_widget.h"

#include "adapters/qgis/curve_plot.h"
#include "adapters/qgis/qt_text.h"

#include <algorithm>
#include <QDesktopServices>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QUrl>
#include <QVBoxLayout>

namespace wxl::qgis {
namespace {

using Look = kde_tool::ResultPanel::Look;

constexpr int kEdge = 4;
constexpr int kMostLines = 4;  ///< more of them scroll

QColor colour_of(Look look, const QColor& ground) {
    switch (look) {
        case Look::kDone:
            return ReadableOn(ground, QColor(0x2e, 0x7d, 0x32));
        case Look::kPartly:
            return ReadableOn(ground, QColor(0xb2, 0x6a, 0x00));
        case Look::kFailure:
            return ReadableOn(ground, QColor(0xc6, 0x28, 0x28));
        case Look::kNote:
            break;
    }
    return ReadableOn(ground, QColor(0x1b, 0x6c, 0xa8));
}

QString sign_of(Look look) {
    switch (look) {
        case Look::kDone:
            return QStringLiteral("\u2713");
        case Look::kPartly:
            return QStringLiteral("!");
        case Look::kFailure:
            return QStringLiteral("\u2717");
        case Look::kNote:
            break;
    }
    return QStringLiteral("i");
}

QPushButton* button(const char* name, const QString& text, const QString& tip) {
    auto* made = new QPushButton(text);
    made->setObjectName(QLatin1String(name));
    made->setToolTip(tip);
    made->setAutoDefault(false);
    return made;
}

void open_in_desktop(const std::filesystem::path& place) {
    QDesktopServices::openUrl(QUrl::fromLocalFile(ToQString(place.string())));
}

}  // namespace

ResultPanelWidget::ResultPanelWidget()
    : m_sign(new QLabel),
      m_headline(new QLabel),
      m_lines(new QPlainTextEdit),
      m_page(button("btnOpenPage", tr("Open page"), tr("Opens the HTML page of the results in the browser"))),
      m_folder(button("btnOpenFolder", tr("Open folder"), tr("Opens the output folder"))),
      m_zoomButton(button("btnZoom", tr("Zoom to results"), tr("Shows all rasters of the run in the map"))) {
    setObjectName(QStringLiteral("panelResults"));
    m_headline->setObjectName(QStringLiteral("lblHeadline"));
    m_headline->setTextFormat(Qt::PlainText);
    QFont bold = font();
    bold.setBold(true);
    m_sign->setFont(bold);
    m_headline->setFont(bold);
    m_lines->setObjectName(QStringLiteral("txtOutcome"));
    m_lines->setToolTip(tr("What failed, why, and what to do"));
    m_lines->setReadOnly(true);
    m_lines->setTabChangesFocus(true);
    m_lines->setFrameShape(QFrame::NoFrame);
    m_lines->viewport()->setAutoFillBackground(false);
    connect(m_page, &QPushButton::clicked, this, [this] { open_in_desktop(m_panel.Page); });
    connect(m_folder, &QPushButton::clicked, this, [this] { open_in_desktop(m_panel.Folder); });
    connect(m_zoomButton, &QPushButton::clicked, this, [this] { m_zoom(m_panel); });
    auto* top = new QHBoxLayout;
    top->addWidget(m_sign);
    top->addWidget(m_headline, 1);
    for (QPushButton* each : {m_page, m_folder, m_zoomButton}) top->addWidget(each);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(kEdge + 8, 4, 4, 4);
    layout->addLayout(top);
    layout->addWidget(m_lines);
    setVisible(false);
}

void ResultPanelWidget::Show(const kde_tool::ResultPanel& panel) {
    m_panel = panel;
    setVisible(!panel.Headline.empty());
    if (panel.Headline.empty()) return;
    const QColor colour = colour_of(panel.Kind, palette().color(QPalette::Window));
    for (QLabel* label : {m_sign, m_headline}) {
        QPalette shown = palette();
        shown.setColor(QPalette::WindowText, colour);
        label->setPalette(shown);
    }
    m_sign->setText(sign_of(panel.Kind));
    m_headline->setText(ToQString(panel.Headline));
    ShowLines();
    ShowButtons();
    update();
}

void ResultPanelWidget::ShowLines() {
    QStringList lines;
    for (const std::string& line : m_panel.Lines) lines << ToQString(line);
    const QString text = lines.join(QLatin1Char('\n'));
    // Setting an equal text would scroll back.
    if (m_lines->toPlainText() != text) m_lines->setPlainText(text);
    m_lines->setVisible(!lines.isEmpty());
    const int rows = std::clamp(static_cast<int>(lines.size()), 1, kMostLines);
    m_lines->setFixedHeight(rows * m_lines->fontMetrics().lineSpacing() + 12);
}

void ResultPanelWidget::ShowButtons() {
    const bool hasRun = !m_panel.Folder.empty();
    m_page->setVisible(hasRun);
    m_page->setEnabled(!m_panel.Page.empty());
    m_folder->setVisible(hasRun);
    m_zoomButton->setVisible(hasRun && m_zoom);
    m_zoomButton->setEnabled(!m_panel.Extent.IsEmpty());
}

void ResultPanelWidget::paintEvent(QPaintEvent* event) {
    QFrame::paintEvent(event);
    QPainter(this).fillRect(0, 0, kEdge, height(), colour_of(m_panel.Kind, palette().color(QPalette::Window)));
}

}  // namespace wxl::qgis
