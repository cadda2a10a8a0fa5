wxl_test(test_locales SOURCES test_locales.cpp faulty_program.cpp DEPENDS wxl_cli)
target_compile_definitions(test_locales PRIVATE WXL_PROGRAM="$<TARGET_FILE:wxl>" WXL_FAILING_CALLS="$<TARGET_FILE:wxl_failing_calls>")
add_dependencies(test_locales wxl wxl_failing_calls)
