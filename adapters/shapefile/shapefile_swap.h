#pragma once
// How new files of a shapefile take the place of old ones.
//
// One file is replaced by renaming a new one over it: at any moment the old or the new one stands there.
// Several files cannot be renamed in one step. They are written into a temporary folder beside the shapefile and synced
// to the disk, with a manifest of what replaces what; then that folder is renamed to ".NAME.swap". This is the moment
// at which the change counts. The files are moved out of it over the old ones, and the folder is removed. A run killed
// before the renaming leaves the old shapefile (and a temporary folder that nobody reads). One killed after it leaves
// the folder: who reads the shapefile then reads the files that count, wherever they are, and who changes it first
// moves the rest.
//
// Folders of that name come from elsewhere too: with a copied shapefile, or made to mislead. The manifest says which
// files on this disk are replaced (their numbers and times, which nobody else can foretell) and what the new ones hold,
// and nothing is moved that does not fit.

#include "adapters/shapefile/shapefile_parts.h"

#include <optional>

namespace wxl::files {

/// What the folder of an interrupted change tells about a shapefile.
enum class SwapState {
    kNone,     ///< no change was cut short
    kWaiting,  ///< the new files count, and some or all of them wait in the folder
    kStale,    ///< the shapefile was replaced as a whole since: its own files count
    kBroken    ///< what is there fits no change of this shapefile
};

struct Swap {
    SwapState State = SwapState::kNone;
    std::filesystem::path Folder;
    std::vector<std::filesystem::path> Waiting;  ///< files in the folder that count
    std::string Trouble;                         ///< why it is stale or broken, and what to do
};

/// Judges without changing anything; reads the new files once where there is such a folder.
Swap find_swap(const std::filesystem::path& shapefile);

/// Completes a change of several files that was cut short, for what is about to be changed; does nothing when there is
/// none, or a stale one. RuntimeError 70 for a broken one, or when it cannot.
void finish_interrupted_swap(const std::filesystem::path& shapefile);

/// The files of a shapefile whose change was cut short, gathered for a reader as links in a folder of their own in the
/// system's place for temporary files. The shapefile is left as it is.
class GatheredShapefile {
public:
    /// RuntimeError when the folder cannot be made.
    GatheredShapefile(const std::filesystem::path& shapefile, const Swap& swap);
    ~GatheredShapefile();
    GatheredShapefile(const GatheredShapefile&) = delete;
    GatheredShapefile& operator=(const GatheredShapefile&) = delete;

    /// The .shp to read.
    const std::filesystem::path& Path() const { return m_path; }

private:
    std::filesystem::path m_folder;
    std::filesystem::path m_path;
};

/// New files of a shapefile on their way to their places.
class PartsSwap {
public:
    explicit PartsSwap(std::filesystem::path shapefile);

    /// Where to write the new file that is to replace this one. Close it (synced) before Commit.
    std::filesystem::path Replacement(const std::filesystem::path& old);

    /// Puts all replacements into their places, with the rights of the old files.
    void Commit();

private:
    void WriteManifest() const;

    std::filesystem::path m_shapefile;
    TemporaryFolder m_folder;
    std::vector<std::filesystem::path> m_replaced;
};

}  // namespace wxl::files
