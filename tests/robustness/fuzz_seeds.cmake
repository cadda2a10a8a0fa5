# The fuzz targets over their seeds, in one ordinary program: each target's entry point takes the target's name. Seeds of
# the settings reader: tests/unit/kde_tool.
set(WXL_FUZZ_TARGETS numbers tracking_csv shapefile geopackage grid levels engine isopleths batch movement_models)
set(WXL_FUZZ_SOURCES)
foreach(target ${WXL_FUZZ_TARGETS})
  set(source ${CMAKE_SOURCE_DIR}/fuzz/fuzz_${target}.cpp)
  set_source_files_properties(${source} PROPERTIES COMPILE_DEFINITIONS LLVMFuzzerTestOneInput=fuzz_${target})
  list(APPEND WXL_FUZZ_SOURCES ${source})
endforeach()
wxl_test(
  test_fuzz_seeds
  SOURCES
  test_fuzz_seeds.cpp
  ${WXL_FUZZ_SOURCES}
  ../support/engine_twins.cpp
  DEPENDS
  wxl_batch
  wxl_engine
  wxl_isopleths
  wxl_akde
  wxl_movement_models
  wxl_adapter_raster
  wxl_adapter_tracking
  wxl_adapter_ogr
  wxl_adapter_geos
  wxl_adapter_memory)
