#include "host/clsKDETool.h"

#include "host/error_labels.h"
#include "kde_tool/frmKDE.h"
#include "platform/guarded.h"
#include "results_page/results_page.h"

namespace wxl::host {

using namespace wxl::platform;

clsKDETool::clsKDETool(const platform::Services& services, IFormPresenter& forms)
    : m_services(services), m_forms(forms), m_utilities(services) {}

CommandProperties clsKDETool::Properties() const {
    return {.Name = "OVI_KDE",
            .Caption = "Kernel Density Estimation",
            .Tooltip = "Kernel Density Estimation",
            .Message = "Kernel Density Estimation"};
}

void clsKDETool::OnCreate(const std::shared_ptr<IApplication>& hook) {
    m_application = hook;
    m_document = hook ? hook->Document() : nullptr;
    m_map = m_document ? m_document->FocusMap() : nullptr;
    m_extension = hook ? hook->FindExtension("OVI9.clsKDE") : nullptr;
}

void clsKDETool::OnClick() {
    Guarded(*m_services.Messages, error_labels::kKernelDensity, [&] {
        if (!m_application) Raise(error_number::kObjectNotSet);
        m_utilities.ConnectToApplication(m_application);
        kde_tool::frmKDE form(m_services, m_utilities);
        results_page::ResultsPage page(m_services);
        form.AddObserver(page);
        form.WrittenPage = [&page] { return page.Written(); };
        m_forms.ShowKernelDialog(form);
    });
}

}  // namespace wxl::host
