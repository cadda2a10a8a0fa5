#include "batch/sha256.h"
#include "platform/runtime_error.h"
#include "tests/support/scratch_folder.h"

#include <fstream>
#include <gtest/gtest.h>
#include <random>
#include <vector>

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

TEST(Sha256, Is_the_same_with_and_without_the_instructions_of_the_processor) {
    std::mt19937 chance(7);
    for (std::size_t count = 0; count < 40; ++count) {
        std::vector<unsigned char> blocks(count * kSha256Block);
        for (unsigned char& byte : blocks) byte = static_cast<unsigned char>(chance());
        Sha256State begin = {};
        for (std::uint32_t& word : begin) word = static_cast<std::uint32_t>(chance());
        Sha256State fast = begin;
        Sha256State plain = begin;
        add_blocks(fast, blocks.data(), count);
        add_blocks_anywhere(plain, blocks.data(), count);
        EXPECT_EQ(fast, plain) << count;
    }
}

TEST(Sha256, Of_a_file_is_that_of_its_bytes) {
    tests::ScratchFolder folder;
    std::ofstream(folder / "a") << "abc";
    EXPECT_EQ(sha256_of_file(folder / "a"), digest_of("abc"));
    EXPECT_THROW(sha256_of_file(folder / "absent"), platform::RuntimeError);
}

}  // namespace
}  // namespace wxl::batch
