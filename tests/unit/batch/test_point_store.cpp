#include "adapters/memory/memory_file_system.h"
#include "batch/point_store.h"
#include "platform/runtime_error.h"

#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <random>

namespace wxl::batch {
namespace {

using testing::HasSubstr;

struct PointStoreTest : testing::Test {
    memory::MemoryFileSystem Files;
    const std::filesystem::path Path = "/points.bin";
    std::vector<analysis::AnimalFixes> Animals;

    PointStoreTest() {
        std::mt19937 random(1);
        std::uniform_real_distribution<double> place(-1e6, 1e6);
        for (const std::size_t count : {3U, 0U, 1000U, 1U}) {
            Animals.push_back({.Id = std::string("a"), .NamingId = "1", .Fixes = {}});
            for (std::size_t i = 0; i < count; ++i) Animals.back().Fixes.push_back({place(random), place(random)});
        }
    }

    std::string Bytes() const { return Files.Disk().Bytes(Path); }
    void Replace(const std::string& bytes) const { Files.Disk().AddFile(Path, bytes); }

    /// Reads everything; the fault's description, or nothing.
    std::string Fault() const {
        try {
            const PointStore store(Files, Path);
            for (std::size_t i = 0; i < store.AnimalCount(); ++i) store.Read(i);
            return {};
        } catch (const platform::RuntimeError& fault) {
            EXPECT_EQ(fault.Number, 57);
            return fault.Description;
        }
    }
};

TEST_F(PointStoreTest, Gives_every_animals_fixes_back_in_any_order) {
    write_point_store(Files, Path, Animals);
    const PointStore store(Files, Path);
    ASSERT_EQ(store.AnimalCount(), 4U);
    for (const std::size_t animal : {2U, 0U, 3U, 1U, 2U}) EXPECT_EQ(store.Read(animal), Animals[animal].Fixes);
}

TEST_F(PointStoreTest, Layout_is_as_documented) {
    write_point_store(Files, Path, Animals);
    const std::string bytes = Bytes();
    EXPECT_EQ(bytes.size(), 40U + 4U * 24U + 1004U * 16U);
    EXPECT_EQ(bytes.substr(0, 8), "WXLPTS  ");
    EXPECT_EQ(bytes[8], 1);
    EXPECT_EQ(bytes[16], 4);
    // First fix of the third animal: three fixes of the first and none of the second stand before it.
    double x = 0.0;
    std::copy_n(bytes.begin() + 40 + 4 * 24 + 3 * 16, 8, static_cast<char*>(static_cast<void*>(&x)));
    EXPECT_EQ(x, Animals[2].Fixes[0].X);
}

TEST_F(PointStoreTest, A_store_without_animals_is_one) {
    write_point_store(Files, Path, {});
    EXPECT_EQ(PointStore(Files, Path).AnimalCount(), 0U);
}

TEST_F(PointStoreTest, A_missing_file_is_named) {
    EXPECT_EQ(Fault(), "The batch's points " + Path.string() +
                           " cannot be used (it is not there or cannot be read). Plan the batch anew with "
                           "--overwrite.");
}

TEST_F(PointStoreTest, A_file_cut_short_anywhere_is_refused) {
    write_point_store(Files, Path, Animals);
    const std::string whole = Bytes();
    for (std::size_t length = 0; length < whole.size(); length += length < 200 ? 1 : 997) {
        Replace(whole.substr(0, length));
        EXPECT_THAT(Fault(), HasSubstr("it is cut short")) << length;
    }
    Replace(whole + "x");
    EXPECT_THAT(Fault(), HasSubstr("it is cut short"));
}

TEST_F(PointStoreTest, Any_changed_byte_is_noticed) {
    write_point_store(Files, Path, Animals);
    const std::string whole = Bytes();
    for (std::size_t at = 0; at < whole.size(); at += at < 300 ? 1 : 501) {
        std::string changed = whole;
        changed[at] = static_cast<char>(changed[at] ^ 0x40);
        Replace(changed);
        EXPECT_THAT(Fault(), HasSubstr("cannot be used (")) << at;
    }
}

TEST_F(PointStoreTest, Headers_of_any_content_are_refused_without_a_crash) {
    write_point_store(Files, Path, Animals);
    const std::string whole = Bytes();
    std::mt19937 random(2);
    for (int round = 0; round < 3000; ++round) {
        std::string hostile = whole;
        for (int i = 0; i < 6; ++i) hostile[12 + random() % 124] = static_cast<char>(random());
        Replace(hostile);
        if (hostile == whole) continue;
        EXPECT_THAT(Fault(), HasSubstr("cannot be used ("));
    }
}

TEST_F(PointStoreTest, Another_byte_order_is_told) {
    write_point_store(Files, Path, Animals);
    std::string bytes = Bytes();
    std::swap(bytes[12], bytes[15]);
    std::swap(bytes[13], bytes[14]);
    Replace(bytes);
    EXPECT_THAT(Fault(), HasSubstr("another byte order"));
}

}  // namespace
}  // namespace wxl::batch
