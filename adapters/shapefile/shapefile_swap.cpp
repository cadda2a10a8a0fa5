#include "adapters/shapefile/shapefile_swap.h"

#include "adapters/disk/byte_order.h"
#include "adapters/disk/disk_file_system.h"
#include "adapters/disk/disk_output_file.h"
#include "adapters/disk/input_file.h"
#include "adapters/disk/posix_error.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fmt/format.h>
#include <set>
#include <sstream>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace wxl::files {

namespace fs = std::filesystem;

namespace {

constexpr const char* kManifest = "manifest";
constexpr const char* kFirstLine = "wxl-swap-1";

/// A file as it stands on this disk; all zero when it is none.
struct Stamp {
    std::uint64_t File = 0;
    std::int64_t Changed = 0;  ///< nanoseconds; of the entry, which nobody can set
    std::uint64_t Size = 0;
    friend bool operator==(const Stamp&, const Stamp&) = default;
};

/// What a file holds.
struct Content {
    std::uint64_t Size = 0;
    std::uint64_t Digest = 0;
    friend bool operator==(const Content&, const Content&) = default;
};

/// One line of a manifest.
struct Replaced {
    std::string Extension;  ///< without the dot, in its own case
    Stamp Old;
    Content New;
};

fs::path folder_of(const fs::path& file) {
    return file.has_parent_path() ? file.parent_path() : fs::path(".");
}

fs::path swap_folder(const fs::path& shapefile) {
    return folder_of(shapefile) / ("." + shapefile.stem().string() + ".swap");
}

fs::path part_named(const fs::path& folder, const fs::path& shapefile, const std::string& extension) {
    return folder / (shapefile.stem().string() + "." + extension);
}

Stamp stamp_at(const fs::path& file) {
    struct stat status = {};
    if (::lstat(file.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return {};
    constexpr std::int64_t kNanoseconds = 1'000'000'000;
    return {status.st_ino, status.st_ctim.tv_sec * kNanoseconds + status.st_ctim.tv_nsec,
            static_cast<std::uint64_t>(status.st_size)};
}

/// FNV-1a (Fowler, Noll and Vo 1991) over words of eight bytes: it tells files apart that were not made alike on
/// purpose.
class Digest {
public:
    void Add(std::string_view bytes) {
        std::size_t at = 0;
        for (; at + 8 <= bytes.size(); at += 8) AddWord(load_little<std::uint64_t>(bytes, at));
        for (; at < bytes.size(); ++at) AddWord(static_cast<unsigned char>(bytes[at]));
    }
    std::uint64_t Value() const { return m_value; }

private:
    void AddWord(std::uint64_t word) {
        m_value = (m_value ^ word) * 0x100000001b3;
        m_value ^= m_value >> 32;
    }

    std::uint64_t m_value = 0xcbf29ce484222325;
};

Content content_of(const fs::path& path) {
    const InputFile file(path);
    Digest digest;
    std::string block(1 << 20, '\0');
    for (std::uint64_t at = 0; at < file.Size(); at += block.size()) {
        const auto length = static_cast<std::size_t>(std::min<std::uint64_t>(block.size(), file.Size() - at));
        file.Read(at, std::span(block).first(length));
        digest.Add(std::string_view(block).substr(0, length));
    }
    return {file.Size(), digest.Value()};
}

/// Whether a regular file stands there that holds what is expected.
bool holds(const fs::path& file, const Content& expected) {
    const Stamp stamp = stamp_at(file);
    return stamp != Stamp{} && stamp.Size == expected.Size && content_of(file) == expected;
}

bool is_part(const std::string& extension) {
    constexpr std::array<std::string_view, 3> kParts = {"dbf", "shp", "shx"};
    return std::any_of(kParts.begin(), kParts.end(), [&](auto part) { return platform::EqualNoCase(part, extension); });
}

/// The manifest of a folder; nothing when it has none that can be read.
std::optional<std::vector<Replaced>> read_manifest(const fs::path& folder) {
    constexpr std::uint64_t kLongest = 4096;
    const fs::path path = folder / kManifest;
    const Stamp stamp = stamp_at(path);
    if (stamp == Stamp{} || stamp.Size > kLongest) return std::nullopt;
    const InputFile file(path);
    std::string text(static_cast<std::size_t>(std::min(file.Size(), kLongest)), '\0');
    file.Read(0, text);
    std::istringstream lines(text);
    lines.imbue(std::locale::classic());
    std::string first;
    std::getline(lines, first);
    std::vector<Replaced> parts;
    Replaced part;
    while (lines >> part.Extension >> part.Old.File >> part.Old.Changed >> part.Old.Size >> part.New.Size >>
           part.New.Digest)
        parts.push_back(part);
    const bool good = first == kFirstLine && lines.eof() && !parts.empty() &&
                      std::all_of(parts.begin(), parts.end(), [](const auto& p) { return is_part(p.Extension); });
    return good ? std::optional(parts) : std::nullopt;
}

std::set<std::string> names_in(const fs::path& folder) {
    std::set<std::string> names;
    std::error_code failure;
    for (const auto& entry : fs::directory_iterator(folder, failure)) names.insert(entry.path().filename().string());
    if (failure) RaiseErrno(failure.value(), folder);
    return names;
}

std::string broken(const fs::path& folder, const fs::path& shapefile, const std::string& why) {
    return fmt::format(
        "{} tells of a change of {} that was cut short, and cannot be used: {}. Delete that folder when the shapefile "
        "is "
        "as it should be; else put a copy of the shapefile in its place, and delete the folder",
        folder.string(), shapefile.string(), why);
}

/// Where each part of a manifest is.
struct Places {
    std::vector<fs::path> Waiting;  ///< in the folder, for the file that it was made for
    bool AnyMoved = false;          ///< the new file stands in its place
    std::string Misfit;             ///< the first part that is not where it should be, and why
};

Places places_of(const fs::path& folder, const fs::path& shapefile, const std::vector<Replaced>& parts) {
    Places places;
    for (const Replaced& part : parts) {
        const fs::path waiting = part_named(folder, shapefile, part.Extension);
        const fs::path place = part_named(folder_of(shapefile), shapefile, part.Extension);
        std::error_code none;
        const bool waits = fs::exists(fs::symlink_status(waiting, none));
        const bool moved = !waits && holds(place, part.New);
        places.AnyMoved = places.AnyMoved || moved;
        if (moved) continue;
        if (waits && holds(waiting, part.New) && stamp_at(place) == part.Old)
            places.Waiting.push_back(waiting);
        else if (places.Misfit.empty())
            places.Misfit = !waits                      ? waiting.filename().string() + " is missing"
                            : !holds(waiting, part.New) ? waiting.filename().string() + " is not what was written"
                                                        : place.string() + " was changed since";
    }
    return places;
}

Swap judged(const fs::path& folder, const fs::path& shapefile) {
    Swap swap{SwapState::kBroken, folder, {}, {}};
    std::set<std::string> names = names_in(folder);
    if (names.empty()) return {};
    const auto parts = read_manifest(folder);
    if (!parts) {
        swap.Trouble = broken(folder, shapefile, "it has no list of its files");
        return swap;
    }
    names.erase(kManifest);
    for (const Replaced& part : *parts) names.erase(part_named({}, shapefile, part.Extension).string());
    if (!names.empty()) {
        swap.Trouble = broken(folder, shapefile, *names.begin() + " is no part of it");
        return swap;
    }
    Places places = places_of(folder, shapefile, *parts);
    if (places.Misfit.empty()) {
        swap.State = SwapState::kWaiting;
        swap.Waiting = std::move(places.Waiting);
    } else if (!places.AnyMoved) {
        swap.State = SwapState::kStale;
        swap.Trouble = fmt::format("{} holds a change that was made for other files than {} has now ({}): delete it",
                                   folder.string(), shapefile.string(), places.Misfit);
    } else {
        swap.Trouble = broken(folder, shapefile, places.Misfit);
    }
    return swap;
}

/// What other programs noted beside the file's content: labels, comments, access lists.
void take_over_attributes(const fs::path& old, const fs::path& replacement) {
    std::string names(static_cast<std::size_t>(std::max<ssize_t>(::listxattr(old.c_str(), nullptr, 0), 0)), '\0');
    const ssize_t listed = names.empty() ? 0 : ::listxattr(old.c_str(), names.data(), names.size());
    names.resize(static_cast<std::size_t>(std::max<ssize_t>(listed, 0)));
    for (std::size_t at = 0; at < names.size(); at = names.find('\0', at) + 1) {
        const char* name = names.c_str() + at;
        std::string value(static_cast<std::size_t>(std::max<ssize_t>(::getxattr(old.c_str(), name, nullptr, 0), 0)),
                          '\0');
        const ssize_t size = ::getxattr(old.c_str(), name, value.data(), value.size());
        // One that the system sets itself, or that this disk does not take, is none to be kept.
        if (size >= 0) [[maybe_unused]]
            const int ignored = ::setxattr(replacement.c_str(), name, value.data(), static_cast<std::size_t>(size), 0);
    }
}

/// Gives a new file the rights and, where the system allows it, the owner of the old one.
void take_over_rights(const fs::path& old, const fs::path& replacement) {
    struct stat status = {};
    if (::stat(old.c_str(), &status) != 0) return;
    [[maybe_unused]] const int ignored = ::chown(replacement.c_str(), status.st_uid, status.st_gid);
    take_over_attributes(old, replacement);
    if (::chmod(replacement.c_str(), status.st_mode & 07777) != 0) RaiseErrno(errno, replacement);
}

/// Another program may be finishing the same change.
void move_waiting(const Swap& swap, const fs::path& shapefile) {
    for (const fs::path& file : swap.Waiting)
        if (std::rename(file.c_str(), (folder_of(shapefile) / file.filename()).c_str()) != 0 && errno != ENOENT)
            RaiseErrno(errno, file);
    sync_folder(folder_of(shapefile));
    const fs::path manifest = swap.Folder / kManifest;
    if (::unlink(manifest.c_str()) != 0 && errno != ENOENT) RaiseErrno(errno, manifest);
    if (::rmdir(swap.Folder.c_str()) != 0 && errno != ENOENT) RaiseErrno(errno, swap.Folder);
}

}  // namespace

Swap find_swap(const fs::path& shapefile) {
    const fs::path folder = swap_folder(shapefile);
    std::error_code none;
    // Files move while another program finishes the change: then a second look finds them in their places.
    constexpr int kLooks = 3;
    Swap swap;
    for (int look = 0; look < kLooks; ++look) {
        // A link of that name leads to files that are not ours.
        if (!fs::is_directory(fs::symlink_status(folder, none))) return {};
        try {
            swap = judged(folder, shapefile);
        } catch (const platform::RuntimeError& error) {
            swap = {SwapState::kBroken, folder, {}, broken(folder, shapefile, error.Description)};
        }
        if (swap.State != SwapState::kBroken) return swap;
    }
    return swap;
}

void finish_interrupted_swap(const fs::path& shapefile) {
    const Swap swap = find_swap(shapefile);
    if (swap.State == SwapState::kBroken) platform::Raise(platform::error_number::kPermissionDenied, swap.Trouble);
    if (swap.State == SwapState::kWaiting) move_waiting(swap, shapefile);
    if (swap.State == SwapState::kNone) ::rmdir(swap_folder(shapefile).c_str());
}

GatheredShapefile::GatheredShapefile(const fs::path& shapefile, const Swap& swap) {
    std::string name = fs::absolute(temporary_folder() / "wxl-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) RaiseNoTemporary(errno);
    m_folder = name;
    m_path = m_folder / shapefile.filename();
    std::vector<fs::path> files = swap.Waiting;
    for (const fs::path& part : parts_of(shapefile))
        if (std::none_of(swap.Waiting.begin(), swap.Waiting.end(),
                         [&](const fs::path& waiting) { return waiting.filename() == part.filename(); }))
            files.push_back(part);
    for (const fs::path& file : files) {
        std::error_code failure;
        std::error_code ignored;
        fs::create_symlink(fs::absolute(file), m_folder / file.filename(), failure);
        if (!failure) continue;
        fs::remove_all(m_folder, ignored);
        RaiseNoTemporary(failure.value());
    }
}

GatheredShapefile::~GatheredShapefile() {
    std::error_code ignored;
    fs::remove_all(m_folder, ignored);
}

PartsSwap::PartsSwap(fs::path shapefile) : m_shapefile(std::move(shapefile)), m_folder(m_shapefile) {}

fs::path PartsSwap::Replacement(const fs::path& old) {
    m_replaced.push_back(old);
    return m_folder.Path() / old.filename();
}

void PartsSwap::WriteManifest() const {
    std::string text = std::string(kFirstLine) + "\n";
    for (const fs::path& old : m_replaced) {
        const Stamp stamp = stamp_at(old);
        const Content content = content_of(m_folder.Path() / old.filename());
        text += fmt::format("{} {} {} {} {} {}\n", old.extension().string().substr(1), stamp.File, stamp.Changed,
                            stamp.Size, content.Size, content.Digest);
    }
    DiskOutputFile file(m_folder.Path() / kManifest, platform::WriteMode::kNew);
    file.Write(text);
    file.Close();
}

void PartsSwap::Commit() {
    Swap swap{SwapState::kWaiting, swap_folder(m_shapefile), {}, {}};
    for (const fs::path& old : m_replaced) {
        take_over_rights(old, m_folder.Path() / old.filename());
        swap.Waiting.push_back(swap.Folder / old.filename());
    }
    if (m_replaced.size() == 1) {
        rename_file(m_folder.Path() / m_replaced.front().filename(), m_replaced.front());
        sync_folder(folder_of(m_shapefile));
        return;
    }
    WriteManifest();
    sync_folder(m_folder.Path());
    rename_new(m_folder.Path(), swap.Folder);
    sync_folder(folder_of(m_shapefile));
    move_waiting(swap, m_shapefile);
}

}  // namespace wxl::files
