#pragma once
// Numbers in the bytes of files.

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace wxl::files {

template <class Number>
Number load_little(std::span<const char> bytes, std::size_t offset) {
    static_assert(std::endian::native == std::endian::little,
                  "files are read and written as the machine holds numbers");
    Number value;
    std::memcpy(&value, bytes.subspan(offset, sizeof value).data(), sizeof value);
    return value;
}

template <class Number>
void store_little(std::span<char> bytes, std::size_t offset, Number value) {
    std::memcpy(bytes.subspan(offset, sizeof value).data(), &value, sizeof value);
}

inline std::uint32_t load_big(std::span<const char> bytes, std::size_t offset) {
    return __builtin_bswap32(load_little<std::uint32_t>(bytes, offset));
}

inline void store_big(std::span<char> bytes, std::size_t offset, std::uint32_t value) {
    store_little(bytes, offset, __builtin_bswap32(value));
}

}  // namespace wxl::files
