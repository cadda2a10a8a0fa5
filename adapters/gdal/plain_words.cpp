#include "adapters/gdal/plain_words.h"

#include <array>
#include <utility>

namespace wxl::files {
namespace {

/// What a message holds, and what is told then.
constexpr std::array<std::pair<std::string_view, const char*>, 6> kSentences = {
    {{"proj.db", kNoProjDatabase},
     {"not recognized as", "unknown format"},
     {"disk image is malformed", "the database is damaged"},
     {"file is not a database", "the file is no database, or a damaged one"},
     {"failed to prepare SQL", "a name in it is no field, or its words make no condition"},
     {"sqlite3_", "the database is damaged, or no GeoPackage"}}};

constexpr std::string_view kParser = "SQL Expression Parsing Error: ";
constexpr std::string_view kSketch = ". Occurred around";

}  // namespace

std::string plain_words(std::string_view message) {
    for (const auto& [part, sentence] : kSentences)
        if (message.find(part) != std::string_view::npos) return sentence;
    if (message.starts_with(kParser)) message = message.substr(kParser.size());
    message = message.substr(0, message.find(kSketch));
    return std::string(message.substr(0, message.find('\n')));
}

}  // namespace wxl::files
