#pragma once
#include "platform/values.h"

#include <cmath>
#include <string>

namespace wxl::utilities {

/// Whether a value names an animal: neither missing nor an empty text, and a number if it is one.
inline bool names_an_animal(const platform::FieldValue& value) {
    if (const auto* text = std::get_if<std::string>(&value)) return !text->empty();
    if (const auto* number = std::get_if<double>(&value)) return !std::isnan(*number);
    return !platform::IsMissing(value);
}

/// Order of animals by their names; 7 and 7.0 are one.
struct AnimalLess {
    bool operator()(const platform::FieldValue& a, const platform::FieldValue& b) const {
        return platform::ValueLess(a, b);
    }
};

}  // namespace wxl::utilities
