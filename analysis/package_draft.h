#pragma once
// What packages of ranges have in common: columns, cells, and their way into the file.

#include "platform/packages.h"
#include "platform/services.h"
#include "platform/values.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace wxl::analysis {

/// Name of the package of a run, joined to the output folder as a file in it.
inline constexpr const char* kRangePackage = "\\RANGES.gpkg";

platform::Field text_column(const char* name);
platform::Field number_column(const char* name);
platform::Field whole_column(const char* name);

/// A cell without a value for none.
platform::FieldValue cell_of(const std::optional<double>& value);
platform::FieldValue cell_of(std::size_t count);

/// A text of any encoding as UTF-8.
platform::FieldValue utf8_cell(const std::string& text);

/// Square metres; nothing where the length of a map unit is not known.
std::optional<double> square_metres(const std::optional<double>& area, const platform::SpatialReference& reference);
std::optional<double> hectares_of(const std::optional<double>& squareMetres);

/// The package of a run on its way: after the first fault nothing more is put into it, and the run goes on.
class PackageDraft {
public:
    /// The services outlive the object.
    explicit PackageDraft(const platform::Services& services) : m_services(services) {}

    /// Begins the package of the output folder, which may hold minimum convex polygons and common areas already.
    void Begin(const std::filesystem::path& folder, const platform::SpatialReference& reference,
               std::vector<platform::PackageTable> tables);

    /// Nothing is begun, and nothing will be written.
    void Forget();

    /// Puts rows where there is a package that takes them.
    void Put(const std::function<void(platform::IPackageWriter&)>& work);

    /// Whether a file of that name is there that is something else; it stays as it is.
    bool IsForeign() const { return m_isForeign; }
    const std::filesystem::path& File() const { return m_file; }

    /// The package takes its place, and its path is returned; empty where none was begun. RuntimeError when it cannot
    /// be written, or could not on the way.
    std::filesystem::path Publish();

private:
    void Keep(const std::function<void()>& work);

    const platform::Services& m_services;
    std::filesystem::path m_file;
    std::unique_ptr<platform::IPackageWriter> m_writer;
    std::string m_fault;
    std::int32_t m_faultNumber = 0;
    bool m_isForeign = false;
};

}  // namespace wxl::analysis
