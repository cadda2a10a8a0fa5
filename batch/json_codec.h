#pragma once
// Values of the house as JSON, and back without loss.

#include "platform/file_system.h"
#include "platform/values.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace wxl::batch {

/// Objects keep their keys in the order in which they were set.
using Json = nlohmann::ordered_json;

/// A number that comes back with the same bits. JSON has no infinite numbers and none that are not a number: those are
/// texts of their bits in hexadecimal.
Json json_of_double(double value);
double double_of(const Json& json);

/// A whole number from `least` to `most`; RuntimeError 13 for anything else.
std::int64_t whole_of(const Json& json, std::int64_t least, std::int64_t most);

/// A text that comes back with the same bytes. Bytes that are no UTF-8 become {"bytes": "hexadecimal"}.
Json json_of_text(std::string_view text);
std::string text_of(const Json& json);

/// A cell that comes back with the same type and value.
Json json_of_value(const platform::FieldValue& value);
platform::FieldValue value_of(const Json& json);

Json json_of_texts(const std::vector<std::string>& texts);
std::vector<std::string> texts_of(const Json& json);

Json json_of_doubles(const std::vector<double>& values);
std::vector<double> doubles_of(const Json& json);

/// A number that may be missing.
Json json_of_optional(const std::optional<double>& value);
std::optional<double> optional_of(const Json& json);

/// A polygon that comes back with the same corners; a null shape as one.
Json json_of_shape(const platform::Geometry& shape);
platform::Geometry shape_of(const Json& json);

std::int32_t int32_of(const Json& json);

template <class Enumeration>
Json json_of_enumeration(Enumeration value) {
    return static_cast<std::int64_t>(value);
}

/// One of the enumeration's values from the first to `last`.
template <class Enumeration>
Enumeration enumeration_of(const Json& json, Enumeration last) {
    return static_cast<Enumeration>(whole_of(json, 0, static_cast<std::int64_t>(last)));
}

/// Reads the JSON file `file` and hands it to `read`. What is no JSON, or lacks something, or holds something of
/// another type, is RuntimeError 57 that names the file and says what to do about it.
void read_json(const platform::IFileSystem& files, const std::filesystem::path& file, const std::string& advice,
               const std::function<void(const Json&)>& read);

/// Publishes the JSON file.
void write_json(platform::IFileSystem& files, const std::filesystem::path& file, const Json& json);

}  // namespace wxl::batch
