#pragma once
#include "platform/messages.h"

#include <functional>
#include <QPointer>
#include <QWidget>
#include <vector>

class QFileDialog;

namespace wxl::qgis {

/// Message boxes over the active window. An empty title becomes the application's name.
class QgisMessages final : public platform::IMessages {
public:
    explicit QgisMessages(QWidget* parent) : m_parent(parent) {}
    platform::Answer Show(const platform::MessageBox& box) override;

private:
    QPointer<QWidget> m_parent;
};

/// Dialogs start in the folder that was chosen last, at first in `home`. A name without an ending gets that of the
/// filter.
class QgisFileDialogs final : public platform::IFileDialogs {
public:
    /// `home` tells the project's folder; empty where there is none.
    explicit QgisFileDialogs(QWidget* parent, std::function<QString()> home = {})
        : m_parent(parent), m_home(std::move(home)) {}
    std::optional<std::filesystem::path> OpenFile(const platform::FileDialog& dialog) override;
    std::optional<std::filesystem::path> SaveFile(const platform::FileDialog& dialog) override;
    std::optional<std::filesystem::path> ChooseFolder(const std::string& title) override;

private:
    /// Shows the dialog; what was chosen.
    std::optional<std::filesystem::path> Choose(QFileDialog& dialog);

    QPointer<QWidget> m_parent;
    std::function<QString()> m_home;
    QString m_lastHome;
    QString m_last;
};

/// Gives Qt's event loop a turn; forms on screen show their new values first.
class QgisHost final : public platform::IHost {
public:
    /// `showStatus` puts a line into the desktop's status bar; empty where there is none.
    explicit QgisHost(std::function<void(const QString&)> showStatus) : m_showStatus(std::move(showStatus)) {}
    void Yield() override;
    void WaitForEvents(double seconds) override;
    void SetStatus(std::string_view text) override;

    /// Calls `refresh` at every Yield until the returned token is destroyed.
    [[nodiscard]] std::shared_ptr<void> OnYield(std::function<void()> refresh);

private:
    void RefreshForms();

    std::function<void(const QString&)> m_showStatus;
    std::vector<std::weak_ptr<std::function<void()>>> m_refreshers;
};

/// "Text files (*.txt)|*.txt" as Qt writes it.
QString ToQtFilter(const std::string& filter);

}  // namespace wxl::qgis
