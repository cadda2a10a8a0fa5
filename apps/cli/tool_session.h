#pragma once
#include "adapters/ogr/disk_services.h"
#include "adapters/ogr/files_map.h"
#include "apps/cli/console_messages.h"
#include "platform/services.h"
#include "utilities/Utilities.h"

#include <filesystem>
#include <memory>
#include <optional>

namespace wxl::cli {

/// File dialogs of a run without a screen: always cancelled.
class NoDialogs final : public platform::IFileDialogs {
public:
    std::optional<std::filesystem::path> OpenFile(const platform::FileDialog&) override { return std::nullopt; }
    std::optional<std::filesystem::path> SaveFile(const platform::FileDialog&) override { return std::nullopt; }
    std::optional<std::filesystem::path> ChooseFolder(const std::string&) override { return std::nullopt; }
};

/// File dialogs answered from the command line: each dialog gets the one file set for it, or is cancelled.
class OptionDialogs final : public platform::IFileDialogs {
public:
    std::optional<std::filesystem::path> OpenFile(const platform::FileDialog&) override { return FileToOpen; }
    std::optional<std::filesystem::path> SaveFile(const platform::FileDialog&) override { return FileToSave; }
    std::optional<std::filesystem::path> ChooseFolder(const std::string&) override { return std::nullopt; }

    std::optional<std::filesystem::path> FileToOpen;
    std::optional<std::filesystem::path> FileToSave;
};

/// What the tools need around them, over files on disk and the console: a document with one map, message boxes, and
/// all services.
class ToolSession {
public:
    ToolSession(Console& console, Answers answers);
    ToolSession(const ToolSession&) = delete;
    ToolSession& operator=(const ToolSession&) = delete;

    /// Puts the layer into the map and highlights it.
    void AddInput(const std::shared_ptr<files::FilesFeatureLayer>& layer);
    void AddInput(const platform::Layer& layer);

    const platform::Services& Services() const { return m_services; }
    ConsoleMessages& Messages() { return m_messages; }
    files::FilesDocument& Document() { return m_application->Doc(); }
    const std::shared_ptr<files::FilesApplication>& Application() const { return m_application; }

    /// Connected to the application.
    utilities::Utilities& Geodata() { return m_geodata; }

private:
    ConsoleMessages m_messages;
    ConsoleHost m_host;
    NoDialogs m_dialogs;
    files::DiskServices m_disk;
    platform::Services m_services;
    std::shared_ptr<files::FilesApplication> m_application;
    utilities::Utilities m_geodata;
};

}  // namespace wxl::cli
