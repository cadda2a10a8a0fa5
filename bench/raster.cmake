wxl_bench(bench_rasters SOURCES rasters.cpp DEPENDS wxl_adapter_raster)
