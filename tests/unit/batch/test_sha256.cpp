#include "adapters/memory/memory_file_system.h"
#include "batch/sha256.h"

#include <gtest/gtest.h>

namespace wxl::batch {
namespace {

std::string digest_of(std::string_view bytes) {
    Sha256 hash;
    hash.Add(bytes);
    return hash.Digest();
}

// The examples of FIPS 180-4.
TEST(Sha256, Agrees_with_the_published_examples) {
    EXPECT_EQ(digest_of(""), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    EXPECT_EQ(digest_of("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(digest_of("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"),
              "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
    EXPECT_EQ(digest_of(std::string(1'000'000, 'a')),
              "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

TEST(Sha256, Is_the_same_however_the_bytes_are_cut) {
    const std::string bytes(200, 'x');
    for (std::size_t cut = 0; cut <= bytes.size(); ++cut) {
        Sha256 hash;
        hash.Add(std::string_view(bytes).substr(0, cut));
        hash.Add(std::string_view(bytes).substr(cut));
        EXPECT_EQ(hash.Digest(), digest_of(bytes)) << cut;
    }
}

TEST(Sha256, Of_a_file_is_that_of_its_bytes_read_in_pieces) {
    memory::MemoryFileSystem files;
    for (const std::size_t size : {0U, 3U, 1U << 20U, (1U << 20U) + 1U, 3'000'000U}) {
        std::string bytes(size, 'x');
        for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>(i % 251);
        files.Disk().AddFile("/a", bytes);
        EXPECT_EQ(sha256_of(*files.OpenForReading("/a")), digest_of(bytes)) << size;
    }
}

}  // namespace
}  // namespace wxl::batch
