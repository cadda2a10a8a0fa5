#include "apps/cli/tool_session.h"

#include <utility>

namespace wxl::cli {

ToolSession::ToolSession(Console& console, Answers answers)
    : m_messages(console, std::move(answers)),
      m_host(m_messages),
      m_services(m_disk.Complete({.Messages = &m_messages, .Dialogs = &m_dialogs, .Host = &m_host})),
      m_application(std::make_shared<files::FilesApplication>()),
      m_geodata(m_services) {
    m_geodata.ConnectToApplication(m_application);
}

void ToolSession::AddInput(const std::shared_ptr<files::FilesFeatureLayer>& layer) {
    AddInput(files::layer_of(layer));
}

void ToolSession::AddInput(const platform::Layer& layer) {
    Document().AddSelectedLayer(layer);
}

}  // namespace wxl::cli
