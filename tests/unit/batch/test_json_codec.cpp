#include "adapters/memory/memory_file_system.h"
#include "batch/json_codec.h"
#include "platform/runtime_error.h"

#include <bit>
#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <random>

namespace wxl::batch {
namespace {

using platform::FieldValue;
using testing::HasSubstr;

std::uint64_t bits_after_a_journey(double value) {
    return std::bit_cast<std::uint64_t>(double_of(Json::parse(json_of_double(value).dump())));
}

TEST(JsonCodec, Numbers_keep_every_bit) {
    std::mt19937_64 random(9);
    for (int i = 0; i < 20000; ++i) {
        const std::uint64_t bits = random();
        EXPECT_EQ(bits_after_a_journey(std::bit_cast<double>(bits)), bits);
    }
    for (const double value : {0.0, -0.0, 1.0, 1e300, 5e-324, std::numeric_limits<double>::infinity(),
                               -std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()})
        EXPECT_EQ(bits_after_a_journey(value), std::bit_cast<std::uint64_t>(value)) << value;
}

TEST(JsonCodec, Texts_keep_every_byte) {
    for (const std::string& text : {std::string(), std::string("O'Malley"), std::string("B\xC3\xA4r"),
                                    std::string("B\xE4r"), std::string("\0\xFF\r\n\"\\", 6)})
        EXPECT_EQ(text_of(Json::parse(json_of_text(text).dump())), text);
}

TEST(JsonCodec, Cells_keep_their_type) {
    for (const FieldValue& value :
         {FieldValue(), FieldValue(std::int64_t{7}), FieldValue(7.0), FieldValue(-0.5), FieldValue(std::string("7")),
          FieldValue(std::string("B\xE4r")), FieldValue(std::numeric_limits<std::int64_t>::min())}) {
        const FieldValue back = value_of(Json::parse(json_of_value(value).dump()));
        EXPECT_EQ(back.index(), value.index());
        EXPECT_EQ(back, value);
    }
}

TEST(JsonCodec, What_is_no_number_or_text_is_refused) {
    for (const char* json : {"\"zz\"", "\"7ff00000000000000\"", "\"\"", "\"-7ff000000000000\""})
        EXPECT_THROW(double_of(Json::parse(json)), platform::RuntimeError) << json;
    for (const char* json : {"{\"bytes\":\"e\"}", "{\"bytes\":\"zz\"}"})
        EXPECT_THROW(text_of(Json::parse(json)), platform::RuntimeError) << json;
    for (const char* json : {"1.5", "-1", "11", "18446744073709551615", "\"5\"", "null", "1e300"})
        EXPECT_THROW(whole_of(Json::parse(json), 0, 10), platform::RuntimeError) << json;
    EXPECT_EQ(whole_of(Json::parse("10"), 0, 10), 10);
}

TEST(JsonCodec, A_file_that_cannot_be_read_is_named_with_advice) {
    const memory::MemoryFileSystem files;
    for (const std::string& text : {std::string("{"), std::string("[]"), std::string(), std::string("{\"a\":\"x\"}"),
                                    std::string(100000, '['), std::string("\xFF\xFE")}) {
        files.Disk().AddFile("/a.json", text);
        try {
            read_json(files, "/a.json", "Make it anew.", [](const Json& json) { json.at("a").get<int>(); });
            FAIL() << text;
        } catch (const platform::RuntimeError& fault) {
            EXPECT_THAT(fault.Description, HasSubstr("/a.json cannot be used ("));
            EXPECT_THAT(fault.Description, HasSubstr("). Make it anew."));
        }
    }
}

}  // namespace
}  // namespace wxl::batch
