#include "adapters/gdal/text_lengths.h"

#include "adapters/disk/input_file.h"
#include "platform/runtime_error.h"

#include <algorithm>
#include <cpl_string.h>
#include <cpl_vsi.h>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

namespace wxl::files {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kLongest = 16 << 20;  // bytes

bool is_too_long(const OGRFeature& row, int field) {
    switch (row.GetFieldDefnRef(field)->GetType()) {
        case OFTString:
            return ::strnlen(row.GetRawFieldRef(field)->String, kLongest + 1) > kLongest;
        case OFTBinary:
            return static_cast<std::size_t>(row.GetRawFieldRef(field)->Binary.nCount) > kLongest;
        default:
            return false;
    }
}

bool begins_as_xml(std::string_view start) {
    if (start.starts_with("\xEF\xBB\xBF")) start.remove_prefix(3);
    const std::size_t first = start.find_first_not_of(" \t\r\n");
    return first != std::string_view::npos && start[first] == '<';
}

struct FileCloser {
    void operator()(VSILFILE* file) const { VSIFCloseL(file); }
};
using OpenFile = std::unique_ptr<VSILFILE, FileCloser>;

std::string first_bytes(const fs::path& path) {
    const InputFile file(path);
    std::string start(static_cast<std::size_t>(std::min<std::uint64_t>(512, file.Size())), '\0');
    file.Read(0, start);
    return start;
}

/// RuntimeError 6 where the text of `place`, which is the file or stands in it, goes on for too long without a tag.
void check_tags(const fs::path& path, const std::string& place) {
    const OpenFile file(VSIFOpenL(place.c_str(), "rb"));
    if (!file) return;
    std::string block(1 << 20, '\0');
    std::uint64_t lastTag = 0;
    std::uint64_t at = 0;
    while (const std::size_t got = VSIFReadL(block.data(), 1, block.size(), file.get())) {
        const std::string_view text(block.data(), got);
        for (std::size_t tag = text.find('<'); tag != std::string_view::npos; tag = text.find('<', tag + 1))
            lastTag = at + tag;
        at += got;
        if (at - lastTag > kLongest)
            platform::Raise(platform::error_number::kOverflow,
                            path.string() + " holds a text of more than 16 MB that begins at the byte " +
                                std::to_string(lastTag) + " of its XML: shorten it, or take it out");
    }
}

/// Archives of workbooks list their files, and not the folders that these stand in.
void check_folder(const fs::path& path, const std::string& folder, int depth) {
    const CPLStringList names(VSIReadDir(folder.c_str()));
    for (int i = 0; i < names.Count(); ++i) {
        const std::string name = names[i];
        if (name.ends_with(".xml") || name.ends_with(".kml"))
            check_tags(path, folder + name);
        else if (depth > 0)
            check_folder(path, folder + name + "/", depth - 1);
    }
}

}  // namespace

void CheckTexts(const OGRFeature& row, const fs::path& path) {
    for (int field = 0; field < row.GetFieldCount(); ++field) {
        if (!row.IsFieldSetAndNotNull(field) || !is_too_long(row, field)) continue;
        platform::Raise(platform::error_number::kOverflow, path.string() + ": the row " + std::to_string(row.GetFID()) +
                                                               " holds a text of more than 16 MB in the field \"" +
                                                               row.GetFieldDefnRef(field)->GetNameRef() +
                                                               "\": shorten it, or leave the row out");
    }
}

void CheckXmlTexts(const fs::path& path) {
    std::error_code ignored;
    if (!fs::is_regular_file(path, ignored)) return;
    const std::string start = first_bytes(path);
    if (begins_as_xml(start)) check_tags(path, path.string());
    if (!start.starts_with("PK\x03\x04")) return;
    const std::string archive = "/vsizip/{" + fs::absolute(path).string() + "}/";
    constexpr int kDeepest = 4;
    check_folder(path, archive, kDeepest);
}

}  // namespace wxl::files
