# Tests of geometry operators and of vector data on disk.
wxl_test(test_geos_operators SOURCES test_geos_operators.cpp DEPENDS wxl_adapter_geos)
wxl_test(
  test_files_vector
  SOURCES
  test_dbf_cells.cpp
  test_files_map.cpp
  test_killed_edits.cpp
  test_point_shapefile.cpp
  test_rows_as_they_stand.cpp
  test_shapefile_editing.cpp
  test_shapefile_swap.cpp
  DEPENDS
  wxl_adapter_files_vector)
wxl_test(test_memory_services SOURCES test_memory_services.cpp DEPENDS wxl_adapter_memory_vector)
