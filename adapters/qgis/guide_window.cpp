#include "adapters/qgis/guide_window.h"

#include <QDialogButtonBox>
#include <QPushButton>
#include <QShortcut>
#include <QTextBrowser>
#include <QVBoxLayout>

/// Pages in a static library are known only after this; it must stand outside of all namespaces.
static void know_guide_pages() {
    Q_INIT_RESOURCE(guide);
}

namespace wxl::qgis {

GuideWindow::GuideWindow(QWidget* parent) : QDialog(parent), m_browser(new QTextBrowser) {
    know_guide_pages();
    setObjectName(QStringLiteral("guide"));
    setWindowTitle(tr("WXL Tools: guide"));
    setAttribute(Qt::WA_DeleteOnClose, false);
    m_browser->setOpenExternalLinks(true);
    m_browser->setAccessibleName(windowTitle());
    m_browser->setToolTip(QString());
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    auto* back = buttons->addButton(tr("Back"), QDialogButtonBox::ActionRole);
    back->setToolTip(tr("The page before"));
    back->setEnabled(false);
    connect(back, &QPushButton::clicked, m_browser, &QTextBrowser::backward);
    connect(m_browser, &QTextBrowser::backwardAvailable, back, &QPushButton::setEnabled);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_browser, 1);
    layout->addWidget(buttons);
    resize(720, 480);
}

void GuideWindow::ShowPage(const QString& page) {
    const QStringList parts = page.split(QLatin1Char('#'));
    QUrl url(QStringLiteral("qrc:/wxl/guide/%1.md").arg(parts.first()));
    if (parts.size() > 1) url.setFragment(parts.last());
    m_browser->setSource(url);
    show();
    raise();
    activateWindow();
}

GuideOpener::GuideOpener(QWidget& window, std::function<QString()> page)
    : QObject(&window), m_window(window), m_page(std::move(page)) {
    auto* key = new QShortcut(QKeySequence(QKeySequence::HelpContents), &window);
    connect(key, &QShortcut::activated, this, [this] { Open(); });
}

void GuideOpener::Open() {
    if (!m_guide) m_guide = new GuideWindow(&m_window);
    m_guide->ShowPage(m_page());
}

}  // namespace wxl::qgis
