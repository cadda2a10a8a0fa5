# Disks, rasters and contours over the memory and the files adapter.
wxl_test(
  test_contract_rasters
  SOURCES
  contour_contract.cpp
  file_system_contract.cpp
  files_disk_test.cpp
  files_grid_format_test.cpp
  files_rasters_test.cpp
  memory_and_files_rasters_test.cpp
  memory_and_files_stages.cpp
  raster_contract.cpp
  DEPENDS
  wxl_adapter_memory_raster
  wxl_adapter_files_raster
  LABELS
  contract)
