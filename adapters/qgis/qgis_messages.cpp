#include "adapters/qgis/qgis_messages.h"

#include "adapters/qgis/qt_text.h"
#include "platform/text.h"

#include <algorithm>
#include <cmath>
#include <QApplication>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QTimer>
#include <utility>

namespace wxl::qgis {
namespace {

QMessageBox::Icon icon_of(platform::Icon icon) {
    switch (icon) {
        case platform::Icon::kCritical:
            return QMessageBox::Critical;
        case platform::Icon::kExclamation:
            return QMessageBox::Warning;
        case platform::Icon::kQuestion:
            return QMessageBox::Question;
        case platform::Icon::kInformation:
            return QMessageBox::Information;
        case platform::Icon::kNone:
            break;
    }
    return QMessageBox::NoIcon;
}

QMessageBox::StandardButtons buttons_of(platform::Buttons buttons) {
    switch (buttons) {
        case platform::Buttons::kYesNo:
            return QMessageBox::Yes | QMessageBox::No;
        case platform::Buttons::kYesNoCancel:
            return QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel;
        case platform::Buttons::kOk:
            break;
    }
    return QMessageBox::Ok;
}

/// "txt" of "Text files (*.txt)|*.txt"; "" where any name will do.
QString ending_of(const std::string& filter) {
    const std::size_t at = filter.rfind("|*.");
    const std::string ending = at == std::string::npos ? std::string() : filter.substr(at + 3);
    return ending == "*" || ending.find(';') != std::string::npos ? QString() : ToQString(ending);
}

std::optional<std::filesystem::path> path_of(const QString& chosen) {
    if (chosen.isEmpty()) return std::nullopt;
    return std::filesystem::path(FromQString(chosen));
}

}  // namespace

platform::Answer QgisMessages::Show(const platform::MessageBox& box) {
    QWidget* parent = QApplication::activeModalWidget() ? QApplication::activeModalWidget() : m_parent.data();
    QMessageBox dialog(parent);
    dialog.setObjectName(QStringLiteral("wxlMessageBox"));
    dialog.setIcon(icon_of(box.Sign));
    dialog.setWindowTitle(box.Title.empty() ? QStringLiteral("WXL Tools") : ToQString(box.Title));
    dialog.setTextFormat(Qt::PlainText);
    QString text = ToQString(box.Text);
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n")).replace(QLatin1Char('\r'), QLatin1Char('\n'));
    dialog.setText(text);
    dialog.setStandardButtons(buttons_of(box.Choice));
    switch (dialog.exec()) {
        case QMessageBox::Yes:
            return platform::Answer::kYes;
        case QMessageBox::No:
            return platform::Answer::kNo;
        case QMessageBox::Cancel:
            return platform::Answer::kCancel;
        default:
            break;
    }
    // A question closed by the window's own button is not answered with Yes.
    if (box.Choice == platform::Buttons::kYesNo) return platform::Answer::kNo;
    return box.Choice == platform::Buttons::kYesNoCancel ? platform::Answer::kCancel : platform::Answer::kOk;
}

std::optional<std::filesystem::path> QgisFileDialogs::OpenFile(const platform::FileDialog& dialog) {
    QFileDialog shown(m_parent, ToQString(dialog.Title), QString(), ToQtFilter(dialog.Filter));
    shown.setFileMode(QFileDialog::ExistingFile);
    return Choose(shown);
}

std::optional<std::filesystem::path> QgisFileDialogs::SaveFile(const platform::FileDialog& dialog) {
    QFileDialog shown(m_parent, ToQString(dialog.Title), QString(), ToQtFilter(dialog.Filter));
    shown.setAcceptMode(QFileDialog::AcceptSave);
    shown.setFileMode(QFileDialog::AnyFile);
    shown.setDefaultSuffix(ending_of(dialog.Filter));
    shown.setOption(QFileDialog::DontConfirmOverwrite, !dialog.AskBeforeOverwriting);
    return Choose(shown);
}

std::optional<std::filesystem::path> QgisFileDialogs::ChooseFolder(const std::string& title) {
    QFileDialog shown(m_parent, ToQString(title));
    shown.setFileMode(QFileDialog::Directory);
    shown.setOption(QFileDialog::ShowDirsOnly);
    return Choose(shown);
}

std::optional<std::filesystem::path> QgisFileDialogs::Choose(QFileDialog& dialog) {
    // Another project has another folder.
    const QString home = m_home ? m_home() : QString();
    if (std::exchange(m_lastHome, home) != home || m_last.isEmpty()) m_last = home;
    if (!m_last.isEmpty()) dialog.setDirectory(m_last);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return std::nullopt;
    const QFileInfo chosen(dialog.selectedFiles().first());
    m_last = chosen.isDir() ? chosen.absoluteFilePath() : chosen.absolutePath();
    return path_of(chosen.filePath());
}

void QgisHost::Yield() {
    RefreshForms();
    QApplication::processEvents();
}

void QgisHost::WaitForEvents(double seconds) {
    RefreshForms();
    QTimer wake;
    wake.setTimerType(Qt::PreciseTimer);
    wake.setSingleShot(true);
    wake.start(static_cast<int>(std::ceil(std::clamp(seconds, 0.0, 86400.0) * 1000.0)));
    QApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

void QgisHost::RefreshForms() {
    std::erase_if(m_refreshers, [](const auto& refresher) { return refresher.expired(); });
    for (const auto& refresher : std::vector(m_refreshers))
        if (const auto refresh = refresher.lock()) (*refresh)();
}

void QgisHost::SetStatus(std::string_view text) {
    if (m_showStatus) m_showStatus(ToQString(text));
}

std::shared_ptr<void> QgisHost::OnYield(std::function<void()> refresh) {
    auto token = std::make_shared<std::function<void()>>(std::move(refresh));
    m_refreshers.push_back(token);
    return token;
}

QString ToQtFilter(const std::string& filter) {
    // Pairs of description and pattern; the descriptions already show the pattern.
    QStringList filters;
    const std::vector<std::string> pieces = platform::Split(filter, '|');
    for (std::size_t i = 0; i < pieces.size(); i += 2) filters << ToQString(pieces[i]);
    return filters.join(QStringLiteral(";;"));
}

}  // namespace wxl::qgis
