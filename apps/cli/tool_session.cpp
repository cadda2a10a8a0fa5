#include "apps/cli/tool_session.h"

#include <utility>

namespace wxl::cli {

ToolSession::ToolSession(Console& console, Answers answers)
    : m_messages(console, std::move(answers)),
      m_host(m_messages),
      m_rasters(m_files, m_folders),
      m_tins(m_files, m_folders),
      m_locks(m_files, m_folders),
      m_services{.Messages = &m_messages,
                 .Dialogs = &m_dialogs,
                 .Host = &m_host,
                 .Clock = &m_clock,
                 .Files = &m_files,
                 .Folders = &m_folders,
                 .TempPath = &m_tempPath,
                 .Rasters = &m_rasters,
                 .Shapefiles = &m_shapefiles,
                 .Tins = &m_tins,
                 .Geometry = &m_geometry,
                 .Contours = &m_contours,
                 .Locks = &m_locks},
      m_application(std::make_shared<files::FilesApplication>()),
      m_geodata(m_services) {
    m_geodata.ConnectToApplication(m_application);
}

void ToolSession::AddInput(const std::shared_ptr<files::FilesFeatureLayer>& layer) {
    Document().AddSelectedLayer(files::layer_of(layer));
}

}  // namespace wxl::cli
