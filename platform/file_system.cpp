#include "platform/file_system.h"

#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <unistd.h>

namespace wxl::platform {
namespace {

constexpr std::string_view kTemporaryEnd = ".part";

bool is_reserved_device(std::string_view name) {
    const std::string_view stem = name.substr(0, name.find('.'));
    static constexpr std::array<std::string_view, 4> kDevices = {"CON", "PRN", "AUX", "NUL"};
    if (std::any_of(kDevices.begin(), kDevices.end(), [&](auto device) { return EqualNoCase(stem, device); }))
        return true;
    return stem.size() == 4 && stem[3] >= '1' && stem[3] <= '9' &&
           (EqualNoCase(stem.substr(0, 3), "COM") || EqualNoCase(stem.substr(0, 3), "LPT"));
}

}  // namespace

std::string TemporaryName(const std::string& name) {
    return "." + name + "." + std::to_string(::getpid()) + std::string(kTemporaryEnd);
}

std::optional<TemporaryDataset> parse_temporary_name(std::string_view name) {
    const std::size_t mark = name.rfind(kTemporaryEnd);
    if (name.empty() || name.front() != '.' || mark == std::string_view::npos) return std::nullopt;
    const std::string_view behind = name.substr(mark + kTemporaryEnd.size());
    if (!behind.empty() && behind.front() != '.') return std::nullopt;
    const std::string_view before = name.substr(0, mark);
    const std::size_t point = before.rfind('.');
    if (point == 0 || point == std::string_view::npos) return std::nullopt;
    const std::string_view digits = before.substr(point + 1);
    long process = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), process);
    if (error != std::errc() || end != digits.data() + digits.size() || process < 0) return std::nullopt;
    return TemporaryDataset{std::string(before.substr(1, point - 1)), process};
}

void PublishFile(IFileSystem& files, const std::filesystem::path& file, std::string_view bytes) {
    const auto temporary = file.parent_path() / TemporaryName(file.filename().string());
    try {
        const auto out = files.OpenForWriting(temporary, WriteMode::kReplace);
        out->Write(bytes);
        out->Close();
        files.Rename(temporary, file);
    } catch (...) {
        const RuntimeError error = CurrentError();
        try {
            if (files.FileExists(temporary)) files.DeleteFile(temporary, true);
        } catch (const RuntimeError&) {
            // The first failure is the one to report.
        }
        throw RuntimeError(error);
    }
}

void RefuseLink(const IFolders& folders, const std::filesystem::path& folder) {
    if (folders.IsLink(folder))
        Raise(error_number::kPermissionDenied,
              folder.string() + " is a link, and nothing is written through links: delete it");
}

void MakeOwnFolder(const IFileSystem& files, IFolders& folders, const std::filesystem::path& folder) {
    RefuseLink(folders, folder);
    if (files.FolderExists(folder)) return;
    try {
        folders.Create(folder);
    } catch (const RuntimeError&) {
        RefuseLink(folders, folder);
        if (!files.FolderExists(folder)) throw;
    }
}

void CheckDatasetName(std::string_view name) {
    const auto refuse = [&](const std::string& reason) {
        Raise(error_number::kInvalidCall,
              "The output name \"" + std::string(name) + "\" " + reason + ". Please choose another prefix or name.");
    };
    if (name.empty()) refuse("is empty");
    if (name.size() > 200) refuse("is longer than 200 characters");
    if (!IsUtf8(name)) refuse("is not valid text");
    for (const char c : name) {
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) refuse("holds a control character");
        if (std::string_view("/\\:").find(c) != std::string_view::npos) refuse("holds a path separator");
        if (std::string_view("*?[]<>|\"").find(c) != std::string_view::npos) refuse("holds a wildcard or quote");
    }
    if (name.find("..") != std::string_view::npos) refuse("holds \"..\"");
    if (name.front() == '.' || name.front() == ' ' || name.back() == '.' || name.back() == ' ')
        refuse("starts or ends with a point or blank");
    if (is_reserved_device(name)) refuse("is a reserved device name");
}

}  // namespace wxl::platform
