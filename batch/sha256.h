#pragma once
#include "platform/file_system.h"

#include <nettle/sha2.h>
#include <string>
#include <string_view>

namespace wxl::batch {

/// The SHA-256 digest (FIPS 180-4) of the bytes added so far, as sha256sum prints it.
class Sha256 {
public:
    Sha256() { sha256_init(&m_context); }
    void Add(std::string_view bytes);

    /// 64 hexadecimal digits; then it begins anew.
    std::string Digest();

private:
    sha256_ctx m_context{};
};

/// The digest of a file.
std::string sha256_of(const platform::IInputFile& file);

}  // namespace wxl::batch
