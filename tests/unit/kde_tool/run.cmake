wxl_test(test_kde_report SOURCES test_bandwidth_doctor.cpp test_report_lines.cpp test_run_plan.cpp test_naming_ids.cpp test_report_writer.cpp
         DEPENDS wxl_kde_tool wxl_adapter_memory)
wxl_test(
  test_kde_run
  SOURCES
  test_analysis_run.cpp
  test_report_golden.cpp
  test_run_faults.cpp
  test_subfolders.cpp
  test_summary.cpp
  DEPENDS
  wxl_kde_tool
  wxl_adapter_memory
  wxl_adapter_geos
  wxl_adapter_raster)
