#include "batch/json_codec.h"

#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <variant>

namespace wxl::batch {
namespace {

constexpr std::uint64_t kLargestFile = std::uint64_t{1} << 31U;
constexpr const char* kHexDigits = "0123456789abcdef";

[[noreturn]] void refuse(const std::string& what) {
    platform::Raise(platform::error_number::kTypeMismatch, what);
}

std::string hex_of_bytes(std::string_view bytes) {
    std::string hex;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        hex += kHexDigits[byte >> 4U];
        hex += kHexDigits[byte & 15U];
    }
    return hex;
}

std::string bytes_of_hex(const std::string& hex) {
    std::string bytes;
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2) {
        unsigned byte = 0;
        const auto [end, error] = std::from_chars(hex.data() + i, hex.data() + i + 2, byte, 16);
        if (error != std::errc() || end != hex.data() + i + 2) refuse("bytes that are not hexadecimal");
        bytes += static_cast<char>(byte);
    }
    if (hex.size() % 2 != 0) refuse("half a byte");
    return bytes;
}

/// What is wrong with a text of JSON, without the words of its parser.
std::string plain_fault(const Json::exception& fault) {
    constexpr int kKeyNotFound = 403;
    if (dynamic_cast<const Json::parse_error*>(&fault) != nullptr) return "it is no JSON, or was cut short";
    const std::string_view words = fault.what();
    const std::size_t first = words.find('\'');
    const std::size_t last = words.rfind('\'');
    if (fault.id != kKeyNotFound || first >= last) return "a value of another kind than is expected";
    return "it lacks \"" + std::string(words.substr(first + 1, last - first - 1)) + "\"";
}

std::string described(const std::filesystem::path& file, const std::string& why, const std::string& advice) {
    return file.string() + " cannot be used (" + why + "). " + advice;
}

}  // namespace

Json json_of_double(double value) {
    if (std::isfinite(value)) return value;
    const auto bits = std::bit_cast<std::uint64_t>(value);
    std::string hex;
    for (int shift = 60; shift >= 0; shift -= 4) hex += kHexDigits[(bits >> static_cast<unsigned>(shift)) & 15U];
    return hex;
}

double double_of(const Json& json) {
    if (json.is_number()) return json.get<double>();
    const auto hex = json.get<std::string>();
    std::uint64_t bits = 0;
    const auto [end, error] = std::from_chars(hex.data(), hex.data() + hex.size(), bits, 16);
    if (error != std::errc() || end != hex.data() + hex.size() || hex.size() != 16) refuse("a number that is none");
    return std::bit_cast<double>(bits);
}

std::int64_t whole_of(const Json& json, std::int64_t least, std::int64_t most) {
    const bool fits =
        json.is_number_unsigned() ? json.get<std::uint64_t>() <= std::uint64_t{INT64_MAX} : json.is_number_integer();
    if (!fits) refuse("a whole number that is none");
    const auto number = json.get<std::int64_t>();
    if (number < least || number > most) refuse("the number " + std::to_string(number) + ", which cannot be");
    return number;
}

Json json_of_text(std::string_view text) {
    if (platform::IsUtf8(text)) return std::string(text);
    return {{"bytes", hex_of_bytes(text)}};
}

std::string text_of(const Json& json) {
    return json.is_object() ? bytes_of_hex(json.at("bytes").get<std::string>()) : json.get<std::string>();
}

Json json_of_value(const platform::FieldValue& value) {
    if (const auto* whole = std::get_if<std::int64_t>(&value)) return *whole;
    if (const auto* number = std::get_if<double>(&value)) return {{"number", json_of_double(*number)}};
    if (const auto* text = std::get_if<std::string>(&value)) return json_of_text(*text);
    return nullptr;
}

platform::FieldValue value_of(const Json& json) {
    if (json.is_null()) return {};
    if (json.is_number_integer()) return json.get<std::int64_t>();
    if (json.is_object() && json.contains("number")) return double_of(json.at("number"));
    return text_of(json);
}

Json json_of_texts(const std::vector<std::string>& texts) {
    Json json = Json::array();
    for (const std::string& text : texts) json.push_back(json_of_text(text));
    return json;
}

std::vector<std::string> texts_of(const Json& json) {
    if (!json.is_array()) refuse("a list of texts that is none");
    std::vector<std::string> texts;
    for (const Json& text : json) texts.push_back(text_of(text));
    return texts;
}

Json json_of_doubles(const std::vector<double>& values) {
    Json json = Json::array();
    for (const double value : values) json.push_back(json_of_double(value));
    return json;
}

std::vector<double> doubles_of(const Json& json) {
    if (!json.is_array()) refuse("a list of numbers that is none");
    std::vector<double> values;
    for (const Json& value : json) values.push_back(double_of(value));
    return values;
}

Json json_of_optional(const std::optional<double>& value) {
    return value ? json_of_double(*value) : Json(nullptr);
}

std::optional<double> optional_of(const Json& json) {
    return json.is_null() ? std::nullopt : std::optional(double_of(json));
}

Json json_of_shape(const platform::Geometry& shape) {
    Json json = Json::array();
    for (const std::vector<platform::Point>& ring : shape.Parts) {
        Json points = Json::array();
        for (const platform::Point& point : ring) {
            points.push_back(json_of_double(point.X));
            points.push_back(json_of_double(point.Y));
        }
        json.push_back(std::move(points));
    }
    return json;
}

platform::Geometry shape_of(const Json& json) {
    platform::Geometry shape;
    for (const Json& points : json) {
        std::vector<platform::Point> ring;
        for (std::size_t i = 0; i + 1 < points.size(); i += 2)
            ring.push_back({double_of(points.at(i)), double_of(points.at(i + 1))});
        shape.Parts.push_back(std::move(ring));
    }
    if (!shape.Parts.empty()) shape.Type = platform::ShapeType::kPolygon;
    return shape;
}

std::int32_t int32_of(const Json& json) {
    return static_cast<std::int32_t>(whole_of(json, INT32_MIN, INT32_MAX));
}

void read_json(const platform::IFileSystem& files, const std::filesystem::path& file, const std::string& advice,
               const std::function<void(const Json&)>& read) {
    const std::string text = files.ReadFile(file, kLargestFile);
    try {
        read(Json::parse(text));
    } catch (const Json::exception& fault) {
        platform::Raise(platform::error_number::kDeviceIo, described(file, plain_fault(fault), advice));
    } catch (...) {
        platform::Raise(platform::error_number::kDeviceIo,
                        described(file, platform::CurrentError().Description, advice));
    }
}

void write_json(platform::IFileSystem& files, const std::filesystem::path& file, const Json& json) {
    platform::PublishFile(files, file, json.dump() + "\n");
}

}  // namespace wxl::batch
