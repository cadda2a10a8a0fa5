# One room of the house = one folder = one static library target, wxl_<room>.

option(WXL_WARNINGS_ARE_ERRORS "Stop at a warning of the compiler; on in the presets of this project" OFF)
add_library(wxl_flags INTERFACE)
target_compile_features(wxl_flags INTERFACE cxx_std_20)
target_include_directories(wxl_flags INTERFACE ${CMAKE_SOURCE_DIR})
target_compile_options(
  wxl_flags
  INTERFACE -Wall
            -Wextra
            -Wpedantic
            -Wshadow
            -Wconversion
            -Wsign-conversion
            -Wdouble-promotion
            -Wold-style-cast
            -Wnon-virtual-dtor
            -Woverloaded-virtual
            $<$<BOOL:${WXL_WARNINGS_ARE_ERRORS}>:-Werror>
            # GCC 12 sees overlapping copies in std::string concatenation where there are none (its bug 105651).
            $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
            # Results must be the same on every machine: no fused multiply-add behind our back.
            -ffp-contract=off)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

# wxl_room(<name> SOURCES <files> [DEPENDS <targets>] [PRIVATE_DEPENDS <targets>])
function(wxl_room name)
  cmake_parse_arguments(ROOM "" "" "SOURCES;DEPENDS;PRIVATE_DEPENDS" ${ARGN})
  add_library(wxl_${name} STATIC ${ROOM_SOURCES})
  target_link_libraries(wxl_${name} PUBLIC wxl_flags ${ROOM_DEPENDS} PRIVATE ${ROOM_PRIVATE_DEPENDS})
endfunction()

# wxl_test(<name> SOURCES <files> [DEPENDS <targets>] [LABELS <labels>]): one GoogleTest program, its tests known to ctest.
function(wxl_test name)
  cmake_parse_arguments(TEST "" "" "SOURCES;DEPENDS;LABELS" ${ARGN})
  add_executable(${name} ${TEST_SOURCES})
  target_link_libraries(${name} PRIVATE wxl_flags ${TEST_DEPENDS} wxl_test_places GTest::gmock GTest::gtest_main)
  # Tests are compiled once and run once: the compiler's time counts more than theirs.
  target_compile_options(${name} PRIVATE $<$<CONFIG:Release>:-O1>)
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 600 LABELS "${TEST_LABELS}")
endfunction()
