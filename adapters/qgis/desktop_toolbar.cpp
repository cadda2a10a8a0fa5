#include "adapters/qgis/desktop_toolbar.h"

#include "adapters/qgis/qt_text.h"

#include <QToolButton>

namespace wxl::qgis {
namespace {

void add_command(QMenu& menu, platform::ICommand& command, const std::function<void(platform::ICommand&)>& run) {
    const platform::CommandProperties properties = command.Properties();
    QAction* action = menu.addAction(ToQString(properties.Caption));
    action->setObjectName(ToQString(properties.Name));
    action->setToolTip(ToQString(properties.Tooltip));
    action->setStatusTip(ToQString(properties.Message));
    action->setEnabled(properties.Enabled);
    QObject::connect(action, &QAction::triggered, &menu, [&command, run] {
        if (run)
            run(command);
        else
            command.OnClick();
    });
}

}  // namespace

DesktopToolBar::DesktopToolBar(host::ToolBar definition, const std::function<void(platform::ICommand&)>& run)
    : m_definition(std::move(definition)), m_toolBar(new QToolBar(ToQString(m_definition.Caption))) {
    m_toolBar->setObjectName(ToQString(m_definition.Name));
    for (host::Menu& definedMenu : m_definition.Menus) {
        auto* menu = new QMenu(ToQString(definedMenu.Caption), m_toolBar);
        menu->setObjectName(ToQString(definedMenu.Name));
        menu->setToolTipsVisible(true);
        for (host::MenuItem& item : definedMenu.Items) {
            if (item.StartsGroup) menu->addSeparator();
            add_command(*menu, *item.Command, run);
        }
        auto* button = new QToolButton;
        button->setObjectName(ToQString(definedMenu.Name + "Button"));
        button->setText(ToQString(definedMenu.Caption));
        button->setMenu(menu);
        button->setPopupMode(QToolButton::InstantPopup);
        button->setToolButtonStyle(Qt::ToolButtonTextOnly);
        m_toolBar->addWidget(button);
    }
}

}  // namespace wxl::qgis
