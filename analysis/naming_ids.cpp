#include "analysis/naming_ids.h"

#include "platform/text.h"

#include <array>
#include <charconv>
#include <unordered_map>

namespace wxl::analysis {
namespace {

using platform::FieldValue;

std::string number_text_17(double value) {
    std::array<char, 64> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::general, 17).ptr;
    return platform::UpperCase(std::string(text.data(), end));
}

void make_distinct(std::vector<std::string>& names, std::span<const FieldValue> ids) {
    std::unordered_map<std::string, int> uses;
    for (const std::string& name : names) ++uses[name];
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (const double* number = std::get_if<double>(&ids[i]); number && uses[names[i]] > 1)
            names[i] = number_text_17(*number);
    }
}

}  // namespace

std::vector<std::string> naming_ids(std::span<const FieldValue> ids, bool textIds) {
    std::vector<std::string> names;
    names.reserve(ids.size());
    for (const FieldValue& id : ids)
        names.push_back(textIds ? std::to_string(names.size() + 1) : platform::ValueText(id));
    if (!textIds) make_distinct(names, ids);
    return names;
}

}  // namespace wxl::analysis
