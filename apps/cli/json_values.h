#pragma once
#include "engine/search_profile.h"
#include "platform/values.h"

#include <cmath>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <variant>

namespace wxl::cli {

/// Objects keep their keys in the order in which they were set.
using Json = nlohmann::ordered_json;

/// A number; null where there is none, or none that JSON can hold (infinite, not a number).
inline Json json_number(std::optional<double> value) {
    return value && std::isfinite(*value) ? Json(*value) : Json(nullptr);
}

/// A cell: null, a number or a text.
inline Json json_value(const platform::FieldValue& value) {
    if (const auto* whole = std::get_if<std::int64_t>(&value)) return *whole;
    if (const auto* number = std::get_if<double>(&value)) return json_number(*number);
    if (const auto* text = std::get_if<std::string>(&value)) return *text;
    return nullptr;
}

/// A text; null where it is empty.
inline Json json_or_null(const std::string& text) {
    return text.empty() ? Json(nullptr) : Json(text);
}

/// The local minima of a search, by bandwidth and score.
inline Json json_minima(const engine::SearchProfile& reached) {
    Json minima = Json::array();
    for (const engine::ProfileRow& row : engine::LocalMinima(reached))
        minima.push_back({{"h", json_number(row.Bandwidth)}, {"score", json_number(row.Score)}});
    return minima;
}

/// The text of a result: two blanks of indent; bytes that are no UTF-8 become U+FFFD.
inline std::string json_text(const Json& json) {
    return json.dump(2, ' ', false, Json::error_handler_t::replace);
}

}  // namespace wxl::cli
