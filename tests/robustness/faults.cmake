add_library(wxl_failing_calls MODULE ${CMAKE_SOURCE_DIR}/tests/support/failing_calls.cpp)
target_link_libraries(wxl_failing_calls PRIVATE wxl_flags ${CMAKE_DL_LIBS})
# Preloaded below a sanitizer or a coverage run, it must be neither.
target_compile_options(wxl_failing_calls PRIVATE -U_FORTIFY_SOURCE -fno-sanitize=all -fno-profile-arcs -fno-test-coverage)

# Runs of the program that are disturbed from outside.
function(wxl_disturbed_test name)
  wxl_test(${name} SOURCES ${name}.cpp faulty_program.cpp ${ARGN} DEPENDS wxl_cli LABELS no-coverage)
  target_compile_definitions(${name} PRIVATE WXL_PROGRAM="$<TARGET_FILE:wxl>"
                                             WXL_FAILING_CALLS="$<TARGET_FILE:wxl_failing_calls>")
  add_dependencies(${name} wxl wxl_failing_calls)
endfunction()
wxl_disturbed_test(test_faults datasets.cpp)
wxl_disturbed_test(test_full_disk datasets.cpp)
wxl_disturbed_test(test_locales)
wxl_disturbed_test(test_proj_database)
