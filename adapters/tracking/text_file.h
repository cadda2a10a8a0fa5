#pragma once
#include <filesystem>
#include <istream>
#include <memory>
#include <string>
#include <string_view>

namespace wxl::tracking {

/// A text without a name on disk, for data that must be read twice and come from where that cannot be done. It is gone
/// when the stream is closed. RuntimeError as the system says when there is no room.
std::unique_ptr<std::iostream> make_spool();

/// Opens a text file as bytes that can be sought in: UTF-8 or a single-byte encoding. UTF-16 (by its mark, or by its
/// zero bytes) becomes UTF-8; a pipe is read to its end first. RuntimeError 53 no such file, 70 not allowed, 13 a file
/// that is no text.
std::unique_ptr<std::istream> open_text(const std::filesystem::path& file);

/// UTF-16 in either byte order, by its mark or by zero bytes among the first letters.
enum class Utf16 { kNo, kLittleEndian, kBigEndian };
Utf16 utf16_of(std::string_view start);

/// UTF-8 of UTF-16 units that come in pieces; a unit that is none becomes U+FFFD.
class Utf16Decoder {
public:
    explicit Utf16Decoder(Utf16 order) : m_order(order) {}

    /// Appends to `utf8` what `bytes` say; an odd byte waits for the next piece.
    void Decode(std::string_view bytes, std::string& utf8);

private:
    void TakeUnit(unsigned unit, std::string& utf8);

    Utf16 m_order;
    int m_waiting = -1;        ///< first byte of a unit; -1: none
    unsigned m_surrogate = 0;  ///< first half of a pair; 0: none
};

}  // namespace wxl::tracking
