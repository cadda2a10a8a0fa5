#pragma once
#include "analysis/settings.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace wxl::kde_tool {

/// What a desktop knows that its map does not tell.
class IFormAdvice {
public:
    virtual ~IFormAdvice() = default;

    /// The place of the field that looks like the animal's name.
    virtual std::optional<std::size_t> AnimalField(const std::vector<std::string>& fields) const = 0;

    /// Whether files can be made in this folder, which exists.
    virtual bool CanWrite(const std::filesystem::path& folder) const = 0;

    /// What the project ran last, under the layer's present name; nothing where it ran none.
    virtual std::optional<analysis::Settings> LastSettings() const = 0;
};

}  // namespace wxl::kde_tool
