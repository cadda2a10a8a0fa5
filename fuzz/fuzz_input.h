#pragma once
// Fuzz input taken apart into values, and the check that stops a run.

#include "platform/runtime_error.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

namespace wxl::fuzz {

/// Values from the bytes of an input, in their order; zeros when they are used up.
class FuzzInput {
public:
    FuzzInput(const std::uint8_t* data, std::size_t size) : m_bytes(reinterpret_cast<const char*>(data), size) {}

    bool IsEmpty() const { return m_bytes.empty(); }

    /// The number in the next bytes.
    template <class Number>
    Number Take() {
        Number value{};
        const std::size_t length = std::min(sizeof value, m_bytes.size());
        std::memcpy(&value, m_bytes.data(), length);
        m_bytes.remove_prefix(length);
        return value;
    }

    /// A whole number from `low` to `high`.
    std::int32_t Between(std::int32_t low, std::int32_t high) {
        return low + static_cast<std::int32_t>(Take<std::uint16_t>() % static_cast<std::uint32_t>(high - low + 1));
    }

    /// A number from `low` to `high` in 65536 steps.
    double Within(double low, double high) { return low + (high - low) * Take<std::uint16_t>() / 65535.0; }

    bool Flag() { return (Take<std::uint8_t>() & 1U) != 0U; }

    std::string Text(std::size_t length) {
        const std::string text(m_bytes.substr(0, length));
        m_bytes.remove_prefix(text.size());
        return text;
    }

    std::string Rest() { return Text(m_bytes.size()); }

private:
    std::string_view m_bytes;
};

/// Ends the process where something does not hold that must.
inline void require(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "broken: %s\n", what);
    std::abort();
}

/// The number of the RuntimeError that ends the action, or 0. Anything else that it throws ends the process.
template <class Action>
std::int32_t fault_of(Action&& action) {
    try {
        action();
    } catch (const platform::RuntimeError& error) {
        require(!error.Description.empty(), "a fault that says something");
        return error.Number;
    }
    return 0;
}

}  // namespace wxl::fuzz
