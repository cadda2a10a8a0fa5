#include "results_page/document.h"

#include "pictures/xml_text.h"
#include "results_page/assets.h"
#include "results_page/colour_ramp.h"
#include "results_page/density_picture.h"
#include "results_page/map_svg.h"

#include <charconv>
#include <utility>

namespace wxl::results_page {

namespace {

using pictures::XmlText;

/// Marks the pages of this tool, so that nothing else is overwritten.
constexpr const char* kGenerator = "<meta name=\"generator\" content=\"WXL Tools ";

constexpr std::uint64_t kLargestPage = 512ULL << 20U;

/// As a policy names it: a script of any other content is not run.
std::string script_digest() {
    std::string bytes;
    for (std::size_t i = 0; i + 1 < kScriptDigest.size(); i += 2) {
        unsigned byte = 0;
        std::from_chars(kScriptDigest.data() + i, kScriptDigest.data() + i + 2, byte, 16);
        bytes += static_cast<char>(byte);
    }
    return base64(bytes);
}

}  // namespace

std::string document_opening(const DocumentHead& head) {
    const std::string name = XmlText(head.Title);
    return "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
           "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
           "<meta name=\"color-scheme\" content=\"light dark\">\n" +
           std::string(kGenerator) + WXL_VERSION +
           "\">\n"
           "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; img-src data:; style-src "
           "'unsafe-inline'; script-src 'sha256-" +
           script_digest() + "'\">\n<title>" + name + " – " + XmlText(head.Suffix) +
           "</title>\n<style>\n:root{--ramp:" + css_gradient(density_ramp(kDensityColours), kMapPaper) + "}\n" +
           std::string(kStyle) +
           "</style>\n</head>\n<body>\n<a class=\"skip\" href=\"#results\">Skip to the results</a>\n<header>\n"
           "<p class=\"kicker\">" +
           XmlText(head.Kind) + "</p>\n<h1><bdi>" + name + "</bdi></h1>\n<p class=\"lede\">" + XmlText(head.Lede) +
           "</p>\n<nav aria-label=\"Parts of this page\"><ul><li><a href=\"#results\">Results</a></li><li><a "
           "href=\"#animals\">Animals</a></li><li><a href=\"#reading\">Reading the numbers</a></li><li><a "
           "href=\"#settings\">Settings</a></li><li><a href=\"#repeat\">Repeat the run</a></li>" +
           std::string(head.HasMethods ? "<li><a href=\"#methods\">Methods</a></li>" : "") +
           "</ul></nav>\n</header>\n<main>\n";
}

std::string document_closing(const platform::DateTime& start, const platform::DateTime& finish) {
    return "</main>\n<footer><p>WXL Tools " WXL_VERSION " · begun " + platform::DateTimeText(start) + " · finished " +
           platform::DateTimeText(finish) + "</p></footer>\n<script>\n" + std::string(kScript) +
           "</script>\n</body>\n</html>\n";
}

std::string settings_row(const std::string& name, const std::string& value) {
    return value.empty() ? std::string()
                         : "<tr><th scope=\"row\">" + name + "</th><td>" + XmlText(value) + "</td></tr>\n";
}

std::string command_section(const std::string& note, const std::string& command) {
    return "<section id=\"repeat\" aria-labelledby=\"repeat-name\">\n<h2 id=\"repeat-name\">Repeat the run</h2>\n<p>" +
           note + "</p>\n<pre tabindex=\"0\" aria-label=\"Command\"><code>" + XmlText(command) +
           "</code></pre>\n</section>\n";
}

bool may_replace_page(const platform::IFileSystem& files, const std::filesystem::path& page) {
    if (!files.FileExists(page)) return true;
    return files.ReadFile(page, kLargestPage).find(kGenerator) != std::string::npos;
}

PendingFile::PendingFile(platform::IFileSystem& files, std::filesystem::path place)
    : m_files(files),
      m_place(std::move(place)),
      m_temporary(m_place.parent_path() / platform::TemporaryName(m_place.filename().string())),
      m_file(files.OpenForWriting(m_temporary, platform::WriteMode::kReplace)) {}

PendingFile::~PendingFile() {
    m_file.reset();
    try {
        if (!m_published) m_files.DeleteFile(m_temporary, true);
    } catch (const std::exception&) {
        return;  // what cannot be deleted is swept away by the next run
    }
}

void PendingFile::Publish() {
    m_file->Close();
    m_files.Rename(m_temporary, m_place);
    m_published = true;
}

}  // namespace wxl::results_page
