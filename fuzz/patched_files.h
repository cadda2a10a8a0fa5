#pragma once
// Files made of an input: patches of good files, so that most of what a reader looks at is right, or bytes as they are.

#include "fuzz/fuzz_input.h"

#include <map>
#include <string>
#include <vector>

namespace wxl::fuzz {

using Files = std::map<std::string, std::string>;  ///< bytes by name

/// The good files with the changes that the input asks for: each a file, a place and bytes to write there, a length to
/// cut it to, or the file taken away. An input that begins with an odd byte holds the files themselves.
inline Files files_of(FuzzInput& input, const Files& good) {
    Files files = good;
    std::vector<std::string> names;
    for (const auto& [name, bytes] : good) names.push_back(name);
    if (input.Flag()) {
        for (const std::string& name : names) files[name] = input.Text(input.Take<std::uint16_t>());
        return files;
    }
    while (!input.IsEmpty()) {
        const auto what = input.Take<std::uint8_t>();
        const std::string& name = names[what % names.size()];
        std::string& bytes = files[name];
        const std::size_t place = input.Take<std::uint16_t>();
        const std::size_t length = what / 16U;
        if (length == 14) {
            bytes.resize(std::min(place, bytes.size()));
        } else if (length == 15 && what % 16U == 15U) {
            bytes.clear();
        } else if (!bytes.empty()) {
            const std::string patch = input.Text(length + 1);
            bytes.replace(std::min(place % bytes.size(), bytes.size()), patch.size(), patch);
        }
    }
    return files;
}

}  // namespace wxl::fuzz
