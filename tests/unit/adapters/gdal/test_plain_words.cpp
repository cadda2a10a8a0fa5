#include "adapters/gdal/plain_words.h"

#include <gtest/gtest.h>

namespace wxl::files {
namespace {

TEST(PlainWords, Statements_functions_and_sketches_of_parsers_are_left_out) {
    EXPECT_EQ(plain_words("`/tmp/d.bin' not recognized as a supported file format."), "unknown format");
    EXPECT_EQ(plain_words("'/tmp/d.bin' not recognized as being in a supported file format."), "unknown format");
    EXPECT_EQ(plain_words("sqlite3_get_table(SELECT * FROM t LIMIT 1) failed: database disk image is malformed"),
              "the database is damaged");
    EXPECT_EQ(plain_words("sqlite3_open(a.gpkg) failed: file is not a database"),
              "the file is no database, or a damaged one");
    EXPECT_EQ(plain_words("failed to prepare SQL: SELECT m.\"fid\" FROM \"tw\" m WHERE animal = ="),
              "a name in it is no field, or its words make no condition");
    EXPECT_EQ(
        plain_words("SQL Expression Parsing Error: syntax error, unexpected '='. Occurred around :\nanimal = =\n  ^"),
        "syntax error, unexpected '='");
}

TEST(PlainWords, A_missing_or_foreign_database_of_coordinate_systems_names_its_variables) {
    const std::string told =
        "there is no proj.db of this PROJ; unset PROJ_DATA and PROJ_LIB, or set them to the folder that holds it";
    EXPECT_EQ(plain_words("PROJ: proj_identify: Cannot find proj.db"), told);
    EXPECT_EQ(plain_words("PROJ: proj_create_from_database: /opt/proj.db contains DATABASE.LAYOUT.VERSION.MINOR = 0 "
                          "whereas a number >= 2 is expected. It comes from another PROJ installation."),
              told);
}

TEST(PlainWords, Other_sentences_stay) {
    EXPECT_EQ(plain_words("\"nofield\" not recognised as an available field."),
              "\"nofield\" not recognised as an available field.");
    EXPECT_EQ(plain_words(""), "");
}

}  // namespace
}  // namespace wxl::files
