#pragma once
// A place to try an adapter in: what the contract suites ask of each adapter, so that they run over all unchanged.

#include "platform/file_system.h"
#include "platform/runtime_error.h"
#include "platform/workspaces.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <string>

namespace wxl::tests {

/// The services of one adapter over an empty folder of its own.
class Stage {
public:
    virtual ~Stage() = default;
    virtual platform::IFileSystem& Files() = 0;
    virtual platform::IFolders& Folders() = 0;
    virtual platform::IRasterWorkspace& Rasters() = 0;

    /// Exists, and is empty at first.
    virtual std::filesystem::path Folder() const = 0;
};

/// One adapter, and the raster format to try it with.
struct StageChoice {
    std::string Name;
    std::function<std::unique_ptr<Stage>()> Make;
    std::string RasterFormat = "GRID";
};

inline std::ostream& operator<<(std::ostream& out, const StageChoice& choice) {
    return out << choice.Name;
}

/// The number of the run-time error that `action` ends with; 0 when it ends well.
template <class Action>
std::int32_t error_of(Action&& action) {
    try {
        action();
    } catch (const platform::RuntimeError& error) {
        return error.Number;
    }
    return 0;
}

/// The description of the run-time error that `action` ends with; empty when it ends well.
template <class Action>
std::string text_of_error(Action&& action) {
    try {
        action();
    } catch (const platform::RuntimeError& error) {
        return error.Description;
    }
    return {};
}

}  // namespace wxl::tests
