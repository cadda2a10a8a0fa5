#include "utilities/Utilities.h"

#include "platform/runtime_error.h"

#include <algorithm>
#include <utility>

namespace wxl::utilities {

namespace error_number = platform::error_number;
using platform::Raise;

Utilities::Utilities(const platform::Services& services) : m_services(services) {}

void Utilities::ConnectToApplication(std::shared_ptr<platform::IApplication> application) {
    if (!application) Raise(error_number::kObjectNotSet);
    auto document = application->Document();
    if (!document) Raise(error_number::kObjectNotSet);
    m_map = document->FocusMap();
    m_document = std::move(document);
    m_application = std::move(application);
}

/// Shows the fault being handled. Call inside a catch block.
void Utilities::ShowError(const std::string& procedure, const std::string& detail) const {
    const platform::RuntimeError error = platform::CurrentError();
    std::string text = procedure + ": " + std::to_string(error.Number) + "\r" + error.Description;
    if (!detail.empty()) text += "\r" + detail;
    m_services.Messages->Show(
        {.Text = text, .Title = "Error", .Sign = platform::Icon::kCritical, .Kind = platform::BoxKind::kFault});
}

std::string Utilities::GetTempFolder() {
    std::string path(512, '\0');
    std::size_t length = m_services.TempPath->GetTempPathA(path.size(), path.data());
    if (length > path.size()) {
        path.assign(length + 1, '\0');
        length = m_services.TempPath->GetTempPathA(path.size(), path.data());
    }
    path.resize(std::min(length, path.size()));

    if (!path.empty()) {
        constexpr auto kSeparator = std::filesystem::path::preferred_separator;
        const bool isRoot = path.size() == 1;
        if (!isRoot && (path.back() == '\\' || path.back() == kSeparator)) path.pop_back();
        return path;
    }
    if (m_services.Files->FolderExists("c:\\temp")) return "c:\\temp";
    if (m_services.Files->FolderExists("c:\\tmp")) return "c:\\tmp";
    return "c:\\";
}

}  // namespace wxl::utilities
