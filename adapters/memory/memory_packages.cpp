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

bool are_alike(const Package& a, const Package& b) {
    return a.Reference.Wkt == b.Reference.Wkt &&
           std::ranges::equal(a.Tables, b.Tables, [](const auto& x, const auto& y) { return are_alike(x, y); });
}

class Writer final : public platform::IPackageWriter {
public:
    Writer(platform::IFileSystem& files, MemoryPackages::Content& published, MemoryPackages::Content content)
        : m_files(files), m_published(published), m_content(std::move(content)) {}

    void Drop(std::size_t table, const std::string& key) override {
        const std::size_t field = m_content.Package.Tables[table].Key;
        std::erase_if(m_content.Rows[table],
                      [&](const auto& row) { return platform::ValueText(row.Values[field]) == key; });
    }

    void Put(std::size_t table, const platform::Geometry& shape,
             std::span<const platform::FieldValue> values) override {
        m_content.Rows[table].push_back({shape, {values.begin(), values.end()}});
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
};

}  // namespace

std::unique_ptr<platform::IPackageWriter> MemoryPackages::Open(const Package& package) {
    Content content{package, std::vector<std::vector<Row>>(package.Tables.size())};
    if (m_files.FileExists(package.File)) {
        const auto known = m_packages.find(package.File);
        if (known == m_packages.end() || m_files.ReadFile(package.File, kBytes.size() + 1) != kBytes ||
            !are_alike(known->second.Package, package))
            return nullptr;
        content.Rows = known->second.Rows;
    }
    return std::make_unique<Writer>(m_files, m_packages[package.File], std::move(content));
}

std::vector<MemoryPackages::Row> MemoryPackages::Rows(const std::filesystem::path& file, std::size_t table) const {
    const auto known = m_packages.find(file);
    return known == m_packages.end() || !m_files.FileExists(file) ? std::vector<Row>() : known->second.Rows[table];
}

}  // namespace wxl::memory
