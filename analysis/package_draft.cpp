#include "analysis/package_draft.h"

#include "analysis/output_names.h"
#include "analysis/range_tables.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <utility>

namespace wxl::analysis {
namespace {

using platform::Field;
using platform::FieldType;
using platform::FieldValue;

constexpr double kSquareMetresPerHectare = 1e4;

}  // namespace

Field text_column(const char* name) {
    return {name, FieldType::kText};
}

Field number_column(const char* name) {
    return {name, FieldType::kDouble};
}

Field whole_column(const char* name) {
    return {name, FieldType::kInteger};
}

FieldValue cell_of(const std::optional<double>& value) {
    return value ? FieldValue(*value) : FieldValue();
}

FieldValue cell_of(std::size_t count) {
    return static_cast<std::int64_t>(count);
}

FieldValue utf8_cell(const std::string& text) {
    return platform::IsUtf8(text) ? text : platform::FromWindows1252(text);
}

std::optional<double> square_metres(const std::optional<double>& area, const platform::SpatialReference& reference) {
    const double metres = reference.MetersPerUnit;
    if (!area || reference.IsGeographic || !(metres > 0.0)) return std::nullopt;
    return *area * metres * metres;
}

std::optional<double> hectares_of(const std::optional<double>& squareMetres) {
    return squareMetres ? std::optional(*squareMetres / kSquareMetresPerHectare) : std::nullopt;
}

void PackageDraft::Keep(const std::function<void()>& work) {
    try {
        work();
    } catch (...) {
        const platform::RuntimeError fault = platform::CurrentError();
        m_fault = fault.Description;
        m_faultNumber = fault.Number;
        m_writer.reset();
    }
}

void PackageDraft::Forget() {
    m_writer.reset();
    m_fault.clear();
    m_isForeign = false;
}

void PackageDraft::Begin(const std::filesystem::path& folder, const platform::SpatialReference& reference,
                         std::vector<platform::PackageTable> tables) {
    Forget();
    if (m_services.Packages == nullptr) return;
    m_file = file_in_folder(folder, kRangePackage);
    Keep([&] {
        m_writer = m_services.Packages->Open({m_file,
                                              reference,
                                              std::move(tables),
                                              platform::kPackageChanged,
                                              {convex_polygon_table(), overlap_table()}});
        m_isForeign = !m_writer;
    });
}

void PackageDraft::Put(const std::function<void(platform::IPackageWriter&)>& work) {
    if (m_writer) Keep([&] { work(*m_writer); });
}

std::filesystem::path PackageDraft::Publish() {
    const auto writer = std::move(m_writer);
    if (!m_fault.empty()) platform::Raise(m_faultNumber, m_fault);
    if (!writer) return {};
    writer->Publish();
    return m_file;
}

}  // namespace wxl::analysis
