#pragma once
#include "adapters/ogr/files_map.h"
#include "adapters/tracking/layer_writer.h"
#include "apps/cli/fix_import.h"
#include "apps/cli/fix_rows.h"
#include "apps/cli/input_layer.h"

#include <memory>

namespace wxl::cli {

/// Name of the field of an imported layer that names the animal.
inline constexpr const char* kAnimalField = "animal";

/// Whether a file has to be imported before it can be measured: a table, a layer in degrees (unless these are to be
/// taken as they are), or one that only an import reads (the points of a GPX file, a sheet of a workbook). A file that
/// is not there or cannot be read at all has not: opening it as a layer says what is wrong.
bool needs_import(const InputOptions& input);

/// A tracking file imported into memory: a layer of points as wxl import writes it.
class ImportedLayer {
public:
    /// `columns`: which of the file's other columns are kept. Tells what was found; errors as import_fixes.
    ImportedLayer(const FixOptions& options, FixRows::Columns columns, Console& console);

    const std::shared_ptr<files::FilesFeatureLayer>& Layer() const { return m_layer; }

private:
    tracking::MemoryFile m_file;
    std::shared_ptr<files::FilesFeatureLayer> m_layer;
};

}  // namespace wxl::cli
