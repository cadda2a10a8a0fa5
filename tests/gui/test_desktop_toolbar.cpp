#include "adapters/memory/memory_map.h"
#include "adapters/memory/memory_services.h"
#include "adapters/qgis/desktop_toolbar.h"
#include "adapters/qgis/form_presenter.h"
#include "adapters/qgis/qgis_map.h"

#include <gtest/gtest.h>
#include <memory>
#include <QToolButton>

namespace wxl::qgis {
namespace {

using Texts = std::vector<std::string>;

/// The toolbar of the plugin over an application in memory.
class DesktopToolBarTest : public testing::Test {
protected:
    DesktopToolBarTest() {
        m_environment.Services.Messages = &m_messages;
        m_environment.Services.Host = &m_host;
        m_environment.Forms = &m_presenter;
        m_bar =
            std::make_unique<DesktopToolBar>(host::BuildToolBar(host::kToolBarProgID, m_environment, m_application));
        m_widget.reset(m_bar->Widget());
    }

    QToolBar& Bar() { return *m_widget; }
    QMenu& Menu() { return *Bar().findChild<QMenu*>(QStringLiteral("Tools")); }

private:
    memory::MemoryMessages m_messages;
    QgisHost m_host{{}};
    QgisFormPresenter m_presenter{m_host, nullptr, Desktop{}};
    host::Environment m_environment;
    std::shared_ptr<platform::IApplication> m_application = std::make_shared<memory::MemoryApplication>();
    std::unique_ptr<DesktopToolBar> m_bar;
    std::unique_ptr<QToolBar> m_widget;
};

TEST_F(DesktopToolBarTest, One_button_opens_the_menu) {
    EXPECT_EQ(Bar().windowTitle(), QStringLiteral("Wexley Arcgis 9"));
    EXPECT_EQ(Bar().objectName(), QStringLiteral("OVITools"));
    auto* button = Bar().findChild<QToolButton*>(QStringLiteral("ToolsButton"));
    ASSERT_NE(button, nullptr);
    EXPECT_EQ(button->text(), QStringLiteral("WXL Tools"));
    EXPECT_EQ(button->menu(), &Menu());
    EXPECT_EQ(Menu().title(), QStringLiteral("WXL Tools"));
}

TEST_F(DesktopToolBarTest, The_menu_lists_the_commands_in_order_with_a_line_before_the_last) {
    Texts entries;
    for (const QAction* action : Menu().actions())
        entries.push_back(action->isSeparator() ? "---" : action->text().toStdString());
    EXPECT_EQ(entries,
              (Texts{"Kernel Density Estimation", "Calculate Travel Times and Distances",
                     "Remove Time2 Field Duplicates", "Remove X/Y Duplicates", "Display Travel", "---", "About..."}));
}

TEST_F(DesktopToolBarTest, Every_command_shows_its_tooltip_and_message) {
    struct Hints {
        const char* Name;
        const char* Tooltip;
        const char* Message;
    };
    for (const auto& [name, tooltip, message] :
         {Hints{"OVI_KDE", "Kernel Density Estimation", "Kernel Density Estimation"},
          Hints{"CalcOBS", "Calc Observation Fields", "Calculate Travel Times and Distances"},
          Hints{"RemoveDupsByTime2", "Finds and Removes Duplicate points using the time2 field.",
                "Finds and Removes Duplicate points using the time2 field."},
          Hints{"RemoveDupsByxy", "Finds and Removes Duplicate points.",
                "Finds and Removes Duplicate points using the xy field."},
          Hints{"MOLE", "Display Travel", "Display Travel"}, Hints{"OVI_About", "About...", "About..."}}) {
        const auto* action = Menu().findChild<QAction*>(QLatin1String(name));
        ASSERT_NE(action, nullptr) << name;
        EXPECT_EQ(action->toolTip(), QLatin1String(tooltip)) << name;
        EXPECT_EQ(action->statusTip(), QLatin1String(message)) << name;
        EXPECT_TRUE(action->isEnabled()) << name;
    }
}

}  // namespace
}  // namespace wxl::qgis
