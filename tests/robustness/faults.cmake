add_library(wxl_failing_calls MODULE ${CMAKE_SOURCE_DIR}/tests/support/failing_calls.cpp)
target_link_libraries(wxl_failing_calls PRIVATE wxl_flags ${CMAKE_DL_LIBS})
# Preloaded below a sanitizer or a coverage run, it must be neither.
target_compile_options(wxl_failing_calls PRIVATE -U_FORTIFY_SOURCE -fno-sanitize=all -fno-profile-arcs -fno-test-coverage)

wxl_test(test_faults SOURCES test_faults.cpp faulty_program.cpp DEPENDS wxl_cli)
target_compile_definitions(test_faults PRIVATE WXL_PROGRAM="$<TARGET_FILE:wxl>" WXL_FAILING_CALLS="$<TARGET_FILE:wxl_failing_calls>")
add_dependencies(test_faults wxl wxl_failing_calls)
