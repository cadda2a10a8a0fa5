#pragma once
#include "adapters/ogr/files_map.h"
#include "apps/cli/commands/kde.h"
#include "apps/cli/tool_session.h"
#include "kde_tool/frmKDE.h"

namespace wxl::cli {

/// Refuses options that make no sense by themselves (WrongCall), before anything is opened.
void check_options(const KdeOptions& options);

/// Fills the form as a user does: layer and ID field, settings file, options, then the pages with the statistics, so
/// that the largest reference bandwidth is known and a buffer is suggested where none was given. WrongCall where the
/// options and the input do not go together.
void fill_form(const KdeOptions& options, files::FilesFeatureLayer& layer, OptionDialogs& dialogs,
               kde_tool::frmKDE& form);

}  // namespace wxl::cli
