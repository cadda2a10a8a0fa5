wxl_test(test_kde_report SOURCES report_lines_test.cpp run_plan_test.cpp naming_ids_test.cpp report_writer_test.cpp
         DEPENDS wxl_kde_tool wxl_adapter_memory_raster)
