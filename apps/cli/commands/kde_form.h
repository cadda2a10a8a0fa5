#pragma once
#include "adapters/files/files_map.h"
#include "apps/cli/commands/kde.h"
#include "kde_tool/frmKDE.h"
#include "platform/messages.h"

#include <filesystem>
#include <optional>

namespace wxl::cli {

/// Refuses options that make no sense by themselves (WrongCall), before anything is opened.
void check_options(const KdeOptions& options);

/// File dialogs answered from the command line: each dialog gets the one file set for it, or is cancelled.
class OptionDialogs final : public platform::IFileDialogs {
public:
    std::optional<std::filesystem::path> OpenFile(const platform::FileDialog&) override { return FileToOpen; }
    std::optional<std::filesystem::path> SaveFile(const platform::FileDialog&) override { return FileToSave; }
    std::optional<std::filesystem::path> ChooseFolder(const std::string&) override { return std::nullopt; }

    std::optional<std::filesystem::path> FileToOpen;
    std::optional<std::filesystem::path> FileToSave;
};

/// Fills the form as a user does: layer and ID field, settings file, options, then the pages with the statistics, so
/// that the largest reference bandwidth is known and a buffer is suggested where none was given. WrongCall where the
/// options and the input do not go together.
void fill_form(const KdeOptions& options, files::FilesFeatureLayer& layer, OptionDialogs& dialogs,
               kde_tool::frmKDE& form);

}  // namespace wxl::cli
