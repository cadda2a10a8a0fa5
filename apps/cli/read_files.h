#pragma once
#include "adapters/disk/file_identities.h"
#include "adapters/ogr/files_map.h"

#include <filesystem>
#include <string>
#include <vector>

namespace wxl::cli {

/// The files that a command reads. None of them may be written by the same command, whatever names they go by.
class ReadFiles {
public:
    void Add(const std::filesystem::path& file);
    void Add(const std::vector<std::filesystem::path>& files);

    /// The same, where several are to be written.
    void Refuse(const std::vector<std::filesystem::path>& outputs) const;

    /// RuntimeError 70 when `output` is one of them.
    void Refuse(const std::filesystem::path& output) const;

    /// RuntimeError 70 when a file that stands under the name of the shapefile to be written is one of them.
    void RefuseShapefile(const std::filesystem::path& folder, const std::string& name) const;

private:
    files::FileIdentities m_files;
};

}  // namespace wxl::cli
