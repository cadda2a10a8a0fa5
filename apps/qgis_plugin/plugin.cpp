// The functions that QGIS looks for in a plugin library, and the plugin's wiring.

#include "adapters/ogr/disk_services.h"
#include "adapters/qgis/desktop_locks.h"
#include "adapters/qgis/desktop_toolbar.h"
#include "adapters/qgis/form_presenter.h"
#include "adapters/qgis/processing/wxl_provider.h"
#include "adapters/qgis/qgis_map.h"
#include "adapters/qgis/qgis_messages.h"
#include "adapters/qgis/undo_bar.h"
#include "adapters/qgis/utm_copies.h"

#include <memory>
#include <optional>
#include <qgisinterface.h>
#include <qgisplugin.h>
#include <qgsmessagebar.h>
#include <qgsproject.h>
#include <qgsstatusbar.h>
#include <QIcon>
#include <QPointer>

namespace {

using namespace wxl;

const QString kName = QStringLiteral("WXL Tools");
const QString kDescription =
    QStringLiteral("Home ranges from animal tracking data: kernel density, isopleths, statistics and movement tools");
const QString kCategory = QStringLiteral("Analysis");
const QString kVersion = QStringLiteral("Version 1.1");
const QString kIcon;

/// Everything that the commands work with, in order of construction.
class Wiring {
public:
    explicit Wiring(QgisInterface& desktop)
        : m_messages(desktop.mainWindow()),
          m_dialogs(desktop.mainWindow(), [] { return QgsProject::instance()->homePath(); }),
          m_host([&desktop](const QString& text) { desktop.statusBarIface()->showMessage(text); }),
          m_presenter(m_host, desktop.mainWindow(), DesktopOf(desktop)),
          m_utmCopies(DesktopOf(desktop)),
          m_application(std::make_shared<wxl::qgis::QgisApplication>(DesktopOf(desktop))),
          m_undo(*desktop.messageBar(), DesktopOf(desktop)),
          m_toolBar(host::BuildToolBar(host::kToolBarProgID, {Services(), &m_presenter}, m_application),
                    [this](platform::ICommand& command) {
                        m_undo.Run(command);
                        m_host.SetStatus({});
                    }) {}

    QToolBar* ToolBar() const { return m_toolBar.Widget(); }

private:
    static wxl::qgis::Desktop DesktopOf(QgisInterface& desktop) {
        return {desktop.mapCanvas(), desktop.layerTreeView(), {}};
    }

    platform::Services Services() {
        platform::Services services;
        services.Messages = &m_messages;
        services.Dialogs = &m_dialogs;
        services.Host = &m_host;
        services.Reprojection = &m_utmCopies;
        services = m_disk.Complete(services);
        m_locks.emplace(*services.Locks);
        services.Locks = &*m_locks;
        return services;
    }

    wxl::qgis::QgisMessages m_messages;
    wxl::qgis::QgisFileDialogs m_dialogs;
    wxl::qgis::QgisHost m_host;
    files::DiskServices m_disk;
    std::optional<wxl::qgis::DesktopLocks> m_locks;
    wxl::qgis::QgisFormPresenter m_presenter;
    wxl::qgis::UtmCopies m_utmCopies;
    std::shared_ptr<wxl::qgis::QgisApplication> m_application;
    wxl::qgis::UndoBar m_undo;
    wxl::qgis::DesktopToolBar m_toolBar;
};

class WxlPlugin final : public QgisPlugin {
public:
    explicit WxlPlugin(QgisInterface* desktop)
        : QgisPlugin(kName, kDescription, kCategory, kVersion, QgisPlugin::UI), m_desktop(desktop) {}

    void initGui() override {
        m_wiring.emplace(*m_desktop);
        m_toolBar = m_wiring->ToolBar();
        m_desktop->addToolBar(m_toolBar);
        for (const QMenu* menu : m_toolBar->findChildren<QMenu*>())
            for (QAction* action : menu->actions())
                if (!action->isSeparator()) m_desktop->addPluginToMenu(kName, action);
        wxl::qgis::AddWxlProvider();
    }

    void unload() override {
        wxl::qgis::RemoveWxlProvider();
        if (m_toolBar)
            for (const QMenu* menu : m_toolBar->findChildren<QMenu*>())
                for (QAction* action : menu->actions()) m_desktop->removePluginMenu(kName, action);
        delete m_toolBar.data();
        m_wiring.reset();
    }

private:
    QgisInterface* m_desktop;
    std::optional<Wiring> m_wiring;
    QPointer<QToolBar> m_toolBar;
};

}  // namespace

QGISEXTERN QgisPlugin* classFactory(QgisInterface* desktop) {
    return new WxlPlugin(desktop);
}

QGISEXTERN const QString* name() {
    return &kName;
}

QGISEXTERN const QString* description() {
    return &kDescription;
}

QGISEXTERN const QString* category() {
    return &kCategory;
}

QGISEXTERN int type() {
    return QgisPlugin::UI;
}

QGISEXTERN const QString* version() {
    return &kVersion;
}

QGISEXTERN const QString* icon() {
    return &kIcon;
}

QGISEXTERN void unload(QgisPlugin* plugin) {
    delete plugin;
}

// qgis_process loads no plugins of this kind: a small one in Python, wxl_processing, calls these two.

QGISEXTERN void wxlAddProcessingProvider() {
    wxl::qgis::AddWxlProvider();
}

QGISEXTERN void wxlRemoveProcessingProvider() {
    wxl::qgis::RemoveWxlProvider();
}
