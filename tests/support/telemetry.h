#pragma once
#include "tests/support/places.h"

#include <gtest/gtest.h>

/// Skips the test, with a message, where the file of real telemetry is absent.
#define WXL_NEEDS_TELEMETRY(file)                                                                 \
    do {                                                                                          \
        if (!std::filesystem::exists(file))                                                       \
            GTEST_SKIP() << "real telemetry is absent: set WXL_DATA_DIR to a folder that has it"; \
    } while (false)
