#include "adapters/qgis/guide_window.h"

#include <QCryptographicHash>
#include <QDialogButtonBox>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QPushButton>
#include <QRegularExpression>
#include <QSaveFile>
#include <QShortcut>
#include <QStandardPaths>
#include <QTextBrowser>
#include <QTextDocument>
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

namespace {

const QString kPages = QStringLiteral(":/wxl/guide");

QByteArray bytes_of(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool write(const QString& path, const QByteArray& bytes) {
    QSaveFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit();
}

QByteArray as_html(const QByteArray& markdown) {
    QTextDocument document;
    document.setMarkdown(QString::fromUtf8(markdown));
    QString html = document.toHtml();
    // Links lead from page to page here too.
    html.replace(QRegularExpression(QStringLiteral("(href=\"[\\w-]+)\\.md")), QStringLiteral("\\1.html"));
    return html.toUtf8();
}

/// Tells one state of the pages from another.
QByteArray stamp_of_pages() {
    QCryptographicHash hash(QCryptographicHash::Sha1);
    for (const QString& page : QDir(kPages).entryList(QDir::Files))
        hash.addData(bytes_of(kPages + QLatin1Char('/') + page));
    return hash.result().toHex();
}

bool write_pages(const QDir& folder) {
    if (!folder.mkpath(QStringLiteral("images"))) return false;
    const QDir pages(kPages);
    for (const QString& name : pages.entryList(QDir::Files)) {
        const QString html = QFileInfo(name).completeBaseName() + QStringLiteral(".html");
        if (!write(folder.filePath(html), as_html(bytes_of(pages.filePath(name))))) return false;
    }
    for (const QString& name : QDir(kPages + QStringLiteral("/images")).entryList(QDir::Files)) {
        const QString image = QStringLiteral("images/") + name;
        if (!write(folder.filePath(image), bytes_of(pages.filePath(image)))) return false;
    }
    return write(folder.filePath(QStringLiteral("stamp")), stamp_of_pages());
}

}  // namespace

QString guide_file(const QString& page) {
    if (QGuiApplication::platformName().isEmpty()) return {};
    know_guide_pages();
    const QString cache = QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation);
    const QDir folder(cache + QStringLiteral("/wxl-tools-guide"));
    static const bool written =
        !cache.isEmpty() &&
        (bytes_of(folder.filePath(QStringLiteral("stamp"))) == stamp_of_pages() || write_pages(folder));
    return written ? QUrl::fromLocalFile(folder.filePath(page + QStringLiteral(".html"))).toString() : QString();
}

GuideOpener::GuideOpener(QWidget& window, std::function<QString()> page)
    : QObject(&window), m_window(window), m_page(std::move(page)) {
    auto* key = new QShortcut(QKeySequence(QKeySequence::HelpContents), &window);
    connect(key, &QShortcut::activated, this, [this] { Open(); });
}

void GuideOpener::Open() {
    OpenAt(m_page());
}

void GuideOpener::OpenAt(const QString& page) {
    if (!m_guide) m_guide = new GuideWindow(&m_window);
    m_guide->ShowPage(page);
}

}  // namespace wxl::qgis
