#pragma once
#include <string_view>

namespace wxl::akde {

/// Hears how the work goes. Without one it is done in silence.
class IListener {
public:
    virtual ~IListener() = default;

    /// The share (0 to 1) of the step called `what` that is done; called again and again, so that a host may breathe.
    virtual void Progress(double share, std::string_view what) = 0;
    virtual void EndProgress() = 0;

    /// How the work went.
    virtual void Note(std::string_view line) = 0;

    /// What the user has to see.
    virtual void Problem(std::string_view line) = 0;

    /// Whether the user wishes the run to end after the present animal.
    virtual bool IsStopped() const = 0;
};

}  // namespace wxl::akde
