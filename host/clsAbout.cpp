#include "host/clsAbout.h"

#include "host/error_labels.h"
#include "host/frmAbout.h"
#include "platform/guarded.h"

namespace wxl::host {

using namespace wxl::platform;

clsAbout::clsAbout(const platform::Services& services, IFormPresenter& forms)
    : m_services(services), m_forms(forms), m_utilities(services) {}

CommandProperties clsAbout::Properties() const {
    return {.Name = "OVI_About", .Caption = "About...", .Tooltip = "About...", .Message = "About..."};
}

void clsAbout::OnCreate(const std::shared_ptr<IApplication>& hook) {
    m_application = hook;
    m_document = hook ? hook->Document() : nullptr;
}

void clsAbout::OnClick() {
    Guarded(*m_services.Messages, error_labels::kAbout, [&] {
        if (!m_application) Raise(error_number::kObjectNotSet);
        m_utilities.ConnectToApplication(m_application);
        frmAbout form;
        m_forms.ShowAbout(form);
    });
}

}  // namespace wxl::host
