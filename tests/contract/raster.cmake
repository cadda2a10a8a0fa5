# Disks, rasters and contours over the memory and the files adapter.
wxl_test(
  test_contract_rasters
  SOURCES
  contour_contract.cpp
  file_system_contract.cpp
  test_files_disk.cpp
  test_files_grid_format.cpp
  test_files_rasters.cpp
  test_memory_and_files_rasters.cpp
  memory_and_files_stages.cpp
  raster_contract.cpp
  DEPENDS
  wxl_adapter_memory
  wxl_adapter_raster
  LABELS
  contract)
