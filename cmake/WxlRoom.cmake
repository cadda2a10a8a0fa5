# One room of the house = one folder = one static library target, wxl_<room>.

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
            -Werror
            # GCC 12 sees overlapping copies in std::string concatenation where there are none (its bug 105651).
            $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
            # Results must be the same on every machine: no fused multiply-add behind our back.
            -ffp-contract=off)
set(WXL_DATA_DIR "${CMAKE_SOURCE_DIR}/../shared/data" CACHE PATH "Real telemetry for tests; they are skipped where it is absent")
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
  target_link_libraries(${name} PRIVATE wxl_flags ${TEST_DEPENDS} GTest::gmock GTest::gtest_main)
  target_compile_definitions(${name} PRIVATE WXL_SOURCE_DIR="${CMAKE_SOURCE_DIR}" WXL_BINARY_DIR="${CMAKE_BINARY_DIR}"
                                             WXL_DATA_DIR="${WXL_DATA_DIR}")
  # Tests are compiled once and run once: the compiler's time counts more than theirs.
  target_compile_options(${name} PRIVATE $<$<CONFIG:Release>:-O1>)
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 600 LABELS "${TEST_LABELS}")
endfunction()
