wxl_test(test_adapter_files_tracking
  SOURCES
    test_csv_reader.cpp
    test_tracking_csv.cpp
  DEPENDS
    wxl_adapter_files_tracking)
wxl_test(test_adapter_files_projection SOURCES test_projection.cpp DEPENDS wxl_adapter_files_projection)
