#include "adapters/tracking/text_file.h"

#include "adapters/disk/disk_file_system.h"
#include "platform/runtime_error.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace wxl::tracking {

namespace {

namespace fs = std::filesystem;
namespace error_number = platform::error_number;
using platform::Raise;

constexpr std::size_t kBlock = std::size_t{1} << 16;

void append_utf8(unsigned code, std::string& text) {
    const auto tail = [&](unsigned shift) { text += static_cast<char>(0x80U | ((code >> shift) & 0x3FU)); };
    if (code < 0x80U) {
        text += static_cast<char>(code);
    } else if (code < 0x800U) {
        text += static_cast<char>(0xC0U | (code >> 6U));
        tail(0);
    } else if (code < 0x10000U) {
        text += static_cast<char>(0xE0U | (code >> 12U));
        tail(6), tail(0);
    } else {
        text += static_cast<char>(0xF0U | (code >> 18U));
        tail(12), tail(6), tail(0);
    }
}

std::string first_bytes(std::istream& source) {
    std::string start(4096, '\0');
    source.read(start.data(), static_cast<std::streamsize>(start.size()));
    start.resize(static_cast<std::size_t>(source.gcount()));
    return start;
}

/// What a file of these first bytes is, where that is no text; empty for text.
std::string kind_of_binary(std::string_view start) {
    if (start.starts_with("PK\x03\x04")) return "a zip archive or a workbook";
    if (start.starts_with("\xD0\xCF\x11\xE0")) return "an old Excel workbook or Word document";
    if (start.starts_with("%PDF")) return "a PDF document";
    if (start.starts_with("\x1F\x8B")) return "a compressed file";
    return start.find('\0') != std::string_view::npos ? "no text" : "";
}

void check_text(const fs::path& file, std::string_view start) {
    const std::string kind = kind_of_binary(start);
    if (!kind.empty())
        Raise(error_number::kTypeMismatch,
              file.string() + " is " + kind +
                  ": save the table as CSV (in a spreadsheet: Save as, CSV UTF-8), and import that");
}

/// Copies the rest of a source into a spool, as UTF-8.
std::unique_ptr<std::istream> spooled(std::string start, std::istream& source, Utf16 order) {
    auto spool = make_spool();
    Utf16Decoder decoder(order);
    if (start.starts_with("\xFF\xFE") || start.starts_with("\xFE\xFF")) start.erase(0, 2);
    std::string text;
    while (!start.empty()) {
        text.clear();
        if (order == Utf16::kNo) {
            text = start;
        } else {
            decoder.Decode(start, text);
        }
        spool->write(text.data(), static_cast<std::streamsize>(text.size()));
        start.resize(kBlock);
        source.read(start.data(), kBlock);
        start.resize(static_cast<std::size_t>(source.gcount()));
    }
    spool->flush();
    if (source.bad() || !*spool) Raise(error_number::kDeviceIo, "a temporary copy of the text could not be written");
    spool->seekg(0);
    return spool;
}

}  // namespace

std::unique_ptr<std::iostream> make_spool() {
    const fs::path folder = files::temporary_folder();
    std::string name = (folder / "wxl-XXXXXX").string();
    const int file = ::mkstemp(name.data());
    if (file < 0) files::RaiseNoTemporary(errno);
    auto spool = std::make_unique<std::fstream>(name, std::ios::in | std::ios::out | std::ios::binary);
    ::close(file);
    ::unlink(name.c_str());
    if (!*spool) Raise(error_number::kDeviceIo, folder.string() + ": a temporary file could not be opened");
    return spool;
}

std::unique_ptr<std::istream> open_text(const fs::path& file) {
    auto source = std::make_unique<std::ifstream>();
    source->rdbuf()->pubsetbuf(nullptr, 0);
    source->open(file, std::ios::binary);
    if (!*source) {
        std::error_code ignored;
        if (!fs::exists(file, ignored)) Raise(error_number::kFileNotFound, file.string() + ": there is no such file");
        Raise(error_number::kPermissionDenied, file.string() + " may not be read: check its permissions");
    }
    std::string start = first_bytes(*source);
    const Utf16 order = utf16_of(start);
    if (order == Utf16::kNo) check_text(file, start);
    std::error_code ignored;
    if (order != Utf16::kNo || !fs::is_regular_file(file, ignored)) return spooled(std::move(start), *source, order);
    source->clear();
    source->seekg(0);
    return source;
}

Utf16 utf16_of(std::string_view start) {
    if (start.starts_with("\xFF\xFE")) return Utf16::kLittleEndian;
    if (start.starts_with("\xFE\xFF")) return Utf16::kBigEndian;
    // Letters of Latin scripts have a zero as their other byte.
    std::array<std::size_t, 2> zeros{};
    for (std::size_t i = 0; i < start.size(); ++i)
        if (start[i] == '\0') ++zeros[i % 2];
    const std::size_t half = start.size() / 2;
    if (half >= 4 && zeros[1] * 10 >= half * 8 && zeros[0] == 0) return Utf16::kLittleEndian;
    if (half >= 4 && zeros[0] * 10 >= half * 8 && zeros[1] == 0) return Utf16::kBigEndian;
    return Utf16::kNo;
}

void Utf16Decoder::Decode(std::string_view bytes, std::string& utf8) {
    for (const char byte : bytes) {
        const int value = static_cast<unsigned char>(byte);
        if (m_waiting < 0) {
            m_waiting = value;
            continue;
        }
        const int low = m_order == Utf16::kLittleEndian ? m_waiting : value;
        const int high = m_order == Utf16::kLittleEndian ? value : m_waiting;
        m_waiting = -1;
        TakeUnit(static_cast<unsigned>(high * 256 + low), utf8);
    }
}

void Utf16Decoder::TakeUnit(unsigned unit, std::string& utf8) {
    constexpr unsigned kReplacement = 0xFFFD;
    const bool first = unit >= 0xD800U && unit < 0xDC00U;
    const bool second = unit >= 0xDC00U && unit < 0xE000U;
    if (m_surrogate != 0 && second) {
        append_utf8(0x10000U + ((m_surrogate - 0xD800U) << 10U) + (unit - 0xDC00U), utf8);
        m_surrogate = 0;
        return;
    }
    if (m_surrogate != 0) append_utf8(kReplacement, utf8);
    m_surrogate = first ? unit : 0;
    if (!first) append_utf8(second ? kReplacement : unit, utf8);
}

}  // namespace wxl::tracking
