#pragma once
#include "host/IFormPresenter.h"
#include "platform/commands.h"
#include "platform/services.h"
#include "utilities/Utilities.h"

#include <memory>

namespace wxl::host {

/// The command "About...": opens the About box.
class clsAbout final : public platform::ICommand {
public:
    /// The services and the presenter must outlive the command.
    clsAbout(const platform::Services& services, IFormPresenter& forms);

    platform::CommandProperties Properties() const override;
    void OnCreate(const std::shared_ptr<platform::IApplication>& hook) override;
    void OnClick() override;

private:
    platform::Services m_services;
    IFormPresenter& m_forms;
    utilities::Utilities m_utilities;
    std::shared_ptr<platform::IApplication> m_application;
    std::shared_ptr<platform::IMxDocument> m_document;
};

}  // namespace wxl::host
