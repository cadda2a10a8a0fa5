#pragma once
#include "host/registration.h"

#include <functional>
#include <memory>
#include <QMenu>
#include <QToolBar>
#include <vector>

namespace wxl::qgis {

/// The toolbar and menu of the desktop, built from their definitions alone.
class DesktopToolBar {
public:
    /// `run` is called for a command that is chosen; without it the command just gets its click.
    explicit DesktopToolBar(host::ToolBar definition, const std::function<void(platform::ICommand&)>& run = {});

    /// The toolbar widget, to be added to the main window; the window owns it from then on.
    QToolBar* Widget() const { return m_toolBar; }

private:
    host::ToolBar m_definition;  // owns the commands
    QToolBar* m_toolBar;
};

}  // namespace wxl::qgis
