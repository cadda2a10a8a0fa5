#pragma once
#include "platform/features.h"

#include <utility>

namespace wxl::movement {

/// Runs `pass`, then writes what the cursor holds back, however the pass ended: rows stored or deleted before a fault
/// stay so. The fault of the pass outranks one of the writing after it.
template <class Pass>
auto flushed(platform::IFeatureCursor& cursor, Pass&& pass) -> decltype(pass()) {
    auto run = [&] {
        try {
            return std::forward<Pass>(pass)();
        } catch (...) {
            try {
                cursor.Flush();
            } catch (...) {
                // One report per pass: the first fault.
            }
            throw;
        }
    };
    auto result = run();
    cursor.Flush();
    return result;
}

}  // namespace wxl::movement
