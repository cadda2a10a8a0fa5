#pragma once
#include "host/IFormPresenter.h"
#include "platform/commands.h"
#include "platform/services.h"
#include "utilities/Utilities.h"

#include <memory>

namespace wxl::host {

/// The command "Kernel Density Estimation": opens the analysis dialog.
class clsKDETool final : public platform::ICommand {
public:
    /// The services and the presenter must outlive the command.
    clsKDETool(const platform::Services& services, IFormPresenter& forms);

    platform::CommandProperties Properties() const override;

    /// Keeps the application, its document, the focus map and the extension "OVI9.clsKDE", which may be absent.
    void OnCreate(const std::shared_ptr<platform::IApplication>& hook) override;
    void OnClick() override;

    const std::shared_ptr<platform::IMap>& FocusMap() const { return m_map; }
    const std::shared_ptr<platform::IExtension>& Extension() const { return m_extension; }

private:
    platform::Services m_services;
    IFormPresenter& m_forms;
    utilities::Utilities m_utilities;
    std::shared_ptr<platform::IApplication> m_application;
    std::shared_ptr<platform::IMxDocument> m_document;
    std::shared_ptr<platform::IMap> m_map;
    std::shared_ptr<platform::IExtension> m_extension;
};

}  // namespace wxl::host
