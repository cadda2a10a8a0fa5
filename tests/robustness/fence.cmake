# What the program writes, watched from outside, and the fence around it.
wxl_test(
  test_write_fence
  SOURCES
  test_write_fence.cpp
  cut_short_edits.cpp
  hostile_databases.cpp
  ${CMAKE_SOURCE_DIR}/tests/support/write_watch.cpp
  limited_run.cpp
  DEPENDS
  wxl_cli
  LABELS
  no-coverage)
target_compile_definitions(test_write_fence PRIVATE WXL_PROGRAM="$<TARGET_FILE:wxl>")
add_dependencies(test_write_fence wxl)
