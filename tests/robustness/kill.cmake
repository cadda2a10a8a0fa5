wxl_test(test_kill_kde SOURCES test_kill_kde.cpp DEPENDS wxl_cli LABELS no-coverage)
target_compile_definitions(test_kill_kde PRIVATE WXL_PROGRAM="$<TARGET_FILE:wxl>")
add_dependencies(test_kill_kde wxl)
