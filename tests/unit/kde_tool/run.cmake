wxl_test(test_kde_report SOURCES report_lines_test.cpp run_plan_test.cpp naming_ids_test.cpp report_writer_test.cpp
         DEPENDS wxl_kde_tool wxl_adapter_memory_raster)
wxl_test(
  test_kde_run
  SOURCES
  analysis_run_test.cpp
  report_golden_test.cpp
  DEPENDS
  wxl_kde_tool
  wxl_adapter_memory_vector
  wxl_adapter_memory_raster
  wxl_adapter_geos
  wxl_adapter_files_raster)
