#pragma once
#include "platform/file_system.h"
#include "platform/packages.h"

#include <map>

namespace wxl::memory {

/// Packages in memory; a file of a few bytes in `files` stands for each.
class MemoryPackages final : public platform::IPackages {
public:
    struct Row {
        platform::Geometry Shape;
        std::vector<platform::FieldValue> Values;
    };
    struct Content {
        platform::Package Package;
        std::vector<std::vector<Row>> Rows;  ///< of each table
    };

    explicit MemoryPackages(platform::IFileSystem& files) : m_files(files) {}

    std::unique_ptr<platform::IPackageWriter> Open(const platform::Package& package) override;
    bool HasRows(const std::filesystem::path& file, const std::string& table) const override;

    /// Rows of a table, in the order in which they came; empty where there is no such package.
    std::vector<Row> Rows(const std::filesystem::path& file, const std::string& table) const;

private:
    platform::IFileSystem& m_files;
    std::map<std::filesystem::path, Content> m_packages;
};

}  // namespace wxl::memory
