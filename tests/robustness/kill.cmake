wxl_test(test_kill_kde SOURCES test_kill_kde.cpp DEPENDS wxl_cli LABELS no-coverage)
target_compile_definitions(test_kill_kde PRIVATE WXL_PROGRAM="$<TARGET_FILE:wxl>")
add_dependencies(test_kill_kde wxl)
# In too little memory.
wxl_test(test_short_memory SOURCES test_short_memory.cpp limited_run.cpp DEPENDS wxl_cli LABELS no-coverage)
target_compile_definitions(test_short_memory PRIVATE WXL_PROGRAM="$<TARGET_FILE:wxl>")
add_dependencies(test_short_memory wxl)
