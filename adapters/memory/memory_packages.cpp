#include "adapters/memory/memory_packages.h"

#include <algorithm>
#include <iterator>

namespace wxl::memory {

namespace {

using platform::Package;
using platform::PackageTable;

constexpr std::string_view kBytes = "a package";

bool are_alike(const PackageTable& a, const PackageTable& b) {
    return a.Name == b.Name && a.Shape == b.Shape && a.Fields == b.Fields;
}

const PackageTable* table_of(const Package& package, const std::string& name) {
    const auto found = std::ranges::find(package.Tables, name, &PackageTable::Name);
    return found == package.Tables.end() ? nullptr : &*found;
}

/// Whether a package that stands takes these tables: it has one of them, or of those of others, and none that differs.
bool takes(const Package& standing, const Package& wanted) {
    if (standing.Reference.Wkt != wanted.Reference.Wkt) return false;
    const auto stands = [&](const PackageTable& table) { return table_of(standing, table.Name) != nullptr; };
    const auto fits = [&](const PackageTable& table) {
        return stands(table) && are_alike(*table_of(standing, table.Name), table);
    };
    if (std::ranges::any_of(wanted.Tables, [&](const auto& table) { return stands(table) && !fits(table); }))
        return false;
    return std::ranges::any_of(wanted.Tables, fits) || std::ranges::any_of(wanted.Others, fits);
}

/// Places of the wanted tables among those of a package, which gets those that it lacks.
std::vector<std::size_t> places_in(MemoryPackages::Content& content, const Package& wanted) {
    std::vector<std::size_t> places;
    std::vector<PackageTable>& tables = content.Package.Tables;
    for (const PackageTable& table : wanted.Tables) {
        if (table_of(content.Package, table.Name) == nullptr) tables.push_back(table);
        places.push_back(static_cast<std::size_t>(table_of(content.Package, table.Name) - tables.data()));
    }
    content.Rows.resize(tables.size());
    return places;
}

class Writer final : public platform::IPackageWriter {
public:
    Writer(platform::IFileSystem& files, MemoryPackages::Content& published, MemoryPackages::Content content,
           const Package& wanted)
        : m_files(files),
          m_published(published),
          m_content(std::move(content)),
          m_places(places_in(m_content, wanted)) {
        m_content.Package.File = wanted.File;
        m_content.Package.Reference = wanted.Reference;
    }

    void Drop(std::size_t table, const std::string& key) override {
        const std::size_t field = m_content.Package.Tables[m_places[table]].Key;
        std::erase_if(m_content.Rows[m_places[table]],
                      [&](const auto& row) { return platform::ValueText(row.Values[field]) == key; });
    }

    void Clear(std::size_t table) override { m_content.Rows[m_places[table]].clear(); }

    void Put(std::size_t table, const platform::Geometry& shape,
             std::span<const platform::FieldValue> values) override {
        m_content.Rows[m_places[table]].push_back({shape, {values.begin(), values.end()}});
    }

    void Publish() override {
        const auto file = m_files.OpenForWriting(m_content.Package.File, platform::WriteMode::kReplace);
        file->Write(kBytes);
        file->Close();
        m_published = m_content;
    }

private:
    platform::IFileSystem& m_files;
    MemoryPackages::Content& m_published;
    MemoryPackages::Content m_content;
    std::vector<std::size_t> m_places;
};

}  // namespace

std::unique_ptr<platform::IPackageWriter> MemoryPackages::Open(const Package& package) {
    Content content;
    if (m_files.FileExists(package.File)) {
        const auto known = m_packages.find(package.File);
        if (known == m_packages.end() || m_files.ReadFile(package.File, kBytes.size() + 1) != kBytes ||
            !takes(known->second.Package, package))
            return nullptr;
        content = known->second;
    }
    return std::make_unique<Writer>(m_files, m_packages[package.File], std::move(content), package);
}

std::vector<MemoryPackages::Row> MemoryPackages::Rows(const std::filesystem::path& file,
                                                      const std::string& table) const {
    const auto known = m_packages.find(file);
    if (known == m_packages.end() || !m_files.FileExists(file)) return {};
    const PackageTable* there = table_of(known->second.Package, table);
    if (there == nullptr) return {};
    return known->second.Rows[static_cast<std::size_t>(there - known->second.Package.Tables.data())];
}

bool MemoryPackages::HasRows(const std::filesystem::path& file, const std::string& table) const {
    return !Rows(file, table).empty();
}

}  // namespace wxl::memory
