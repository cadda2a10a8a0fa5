#pragma once
#include "batch/json_codec.h"

#include <cstddef>
#include <string>
#include <vector>

namespace wxl::batch {

inline void add_equal_leaves(const Json& full, const Json& fresh, const std::string& path,
                             std::vector<std::string>& equal) {
    if (full.is_object() && fresh.is_object()) {
        for (const auto& [key, value] : full.items())
            if (fresh.contains(key)) add_equal_leaves(value, fresh[key], path + "/" + key, equal);
    } else if (full.is_array() && full.size() == fresh.size() && !full.empty()) {
        for (std::size_t i = 0; i < full.size(); ++i)
            add_equal_leaves(full[i], fresh[i], path + "/" + std::to_string(i), equal);
    } else if (full == fresh) {
        equal.push_back(path);
    }
}

/// Where a value that was written is as a fresh one, by its path: members that a test forgot to set, so that it would
/// not see them getting lost. Lists of different sizes differ.
inline std::vector<std::string> equal_leaves(const Json& full, const Json& fresh) {
    std::vector<std::string> equal;
    add_equal_leaves(full, fresh, "", equal);
    return equal;
}

}  // namespace wxl::batch
