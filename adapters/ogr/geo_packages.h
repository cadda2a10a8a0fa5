#pragma once
#include "platform/file_system.h"
#include "platform/packages.h"

namespace wxl::files {

/// GeoPackages (OGC 12-128). Tables are made by GDAL and filled by SQLite's prepared statements in one transaction, in
/// a draft beside the file; layers get their indices of places last, and the draft the file's name. The same rows give
/// the same bytes.
class GeoPackages final : public platform::IPackages {
public:
    explicit GeoPackages(platform::IFileSystem& files) : m_files(files) {}
    std::unique_ptr<platform::IPackageWriter> Open(const platform::Package& package) override;
    bool HasRows(const std::filesystem::path& file, const std::string& table) const override;

private:
    platform::IFileSystem& m_files;
};

}  // namespace wxl::files
