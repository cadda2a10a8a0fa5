#include "apps/cli/imported_layer.h"

#include "adapters/gdal/source_rules.h"
#include "adapters/ogr/ogr_source.h"
#include "adapters/tracking/point_layer.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <string_view>

namespace wxl::cli {

namespace {

namespace fs = std::filesystem;

constexpr std::array<std::string_view, 4> kImportedFormats = {".GPX", ".XLSX", ".ODS", ".XLSM"};

/// Formats that OGR opens, but not as one layer of points.
bool is_import_format(const fs::path& file) {
    const std::string ending = platform::UpperCase(file.extension().string());
    return std::find(kImportedFormats.begin(), kImportedFormats.end(), ending) != kImportedFormats.end();
}

/// The layer of points as OGR opens it; null where it does not. RuntimeError for one that leads elsewhere.
std::shared_ptr<files::FilesFeatureLayer> opened_or_null(const InputOptions& input) {
    try {
        auto layer = files::OpenFeatureLayer(input.Input, sources_of(input.AllowIndirect));
        return layer->FeatureClass()->Shape() == platform::ShapeType::kPoint ? layer : nullptr;
    } catch (const files::IndirectSource& refused) {
        raise_with_option(refused);
    } catch (const platform::RuntimeError&) {
        return nullptr;
    }
}

}  // namespace

bool needs_import(const InputOptions& input) {
    const fs::path file = files::split_input(input.Input, sources_of(input.AllowIndirect)).first;
    std::error_code ignored;
    if (!fs::is_regular_file(file, ignored)) return false;
    if (is_import_format(file)) return true;
    const auto layer = opened_or_null(input);
    if (!layer) return !tracking::is_layer_file(file);
    return !input.Degrees && layer->FeatureClass()->Reference().IsGeographic;
}

ImportedLayer::ImportedLayer(const FixOptions& options, FixRows::Columns columns, Console& console)
    : m_file(fs::path(files::split_input(options.Inputs.front(), sources_of(options.AllowIndirect)).first)
                 .stem()
                 .string() +
             ".fgb") {
    ImportedFixes fixes = import_fixes(options, {}, console);
    FixRows rows(fixes, tracking::LayerFormat::kFlatGeobuf, columns);
    const auto writer = tracking::make_memory_writer(m_file, rows.Fields(), fixes.System.Reference);
    rows.PutAll(*writer);
    writer->Close();
    m_layer = files::OpenFeatureLayer(m_file.Path().string(), files::Sources::kAny);
}

}  // namespace wxl::cli
