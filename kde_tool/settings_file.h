#pragma once
#include "analysis/settings.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace wxl::kde_tool {

class frmKDE;

/// Settings files larger than this are not read.
inline constexpr std::uint64_t kSettingsFileLimit = 1'048'576;

/// Settings as the bytes of a settings file: Windows-1252, lines ended by CRLF. The point layer, the ID field,
/// "selected features only" and the list of proportions are not part of it.
std::string SettingsFileBytes(const analysis::Settings& settings);

/// What a reader of a settings file met.
struct SettingsRead {
    std::size_t Settings = 0;  ///< keys with a value, be it one that changes nothing
    std::string Note = {};     ///< output folders that do not exist, each with a carriage return
};

/// Puts the settings found in the bytes of a settings file into the form's controls, as a user would choose them.
///
/// Lines end at CRLF, LF or CR. Every line is upper-cased first; keys may stand in any order, unknown lines are passed
/// over, values that cannot be used change nothing, and the last line is never a key. Never throws for what stands in
/// the file.
SettingsRead ReadSettings(std::string_view bytes, frmKDE& form);

}  // namespace wxl::kde_tool
