#pragma once
// What the pages of these tools have in common, as HTML: one file that needs nothing else.

#include "platform/clock.h"
#include "platform/services.h"

#include <filesystem>
#include <memory>
#include <string>

namespace wxl::results_page {

/// What stands at the head of a page; texts may be any.
struct DocumentHead {
    std::string Title;        ///< such as the layer's name
    std::string Kind;         ///< of the page, above the title
    std::string Suffix;       ///< the same in the window's title
    std::string Lede;         ///< what the run was, below it
    bool HasMethods = false;  ///< a section "methods" follows the others
};

/// From the document type to the opening of the main part: head with style, skip link, title, navigation to the
/// sections "results", "animals", "reading", "settings", "repeat" and, where there is one, "methods".
std::string document_opening(const DocumentHead& head);

/// Version, times, the script, the end of the document.
std::string document_closing(const platform::DateTime& start, const platform::DateTime& finish);

/// A row of a table of settings; "" for an empty value. `name` is HTML, `value` any text.
std::string settings_row(const std::string& name, const std::string& value);

/// The section that repeats the run: a note as HTML, and the command.
std::string command_section(const std::string& note, const std::string& command);

/// Whether the page may be written: nothing stands there, or a page of these tools.
bool may_replace_page(const platform::IFileSystem& files, const std::filesystem::path& page);

/// A file under a temporary name, deleted unless it is published.
class PendingFile {
public:
    PendingFile(platform::IFileSystem& files, std::filesystem::path place);
    ~PendingFile();
    PendingFile(const PendingFile&) = delete;
    PendingFile& operator=(const PendingFile&) = delete;

    platform::IOutputFile& File() { return *m_file; }
    void Publish();

private:
    platform::IFileSystem& m_files;
    std::filesystem::path m_place;
    std::filesystem::path m_temporary;
    std::unique_ptr<platform::IOutputFile> m_file;
    bool m_published = false;
};

}  // namespace wxl::results_page
