# The engine beside its plain loops.
set(twins ${CMAKE_SOURCE_DIR}/tests/support/engine_twins.cpp)
wxl_bench(bench_engine_grid SOURCES engine_grid.cpp ${twins} DEPENDS wxl_engine)
wxl_bench(bench_engine_search SOURCES engine_search.cpp ${twins} DEPENDS wxl_engine)
wxl_bench(bench_engine_adaptive SOURCES engine_adaptive.cpp ${twins} DEPENDS wxl_engine)
wxl_bench(bench_engine_memory SOURCES engine_memory.cpp DEPENDS wxl_engine wxl_adapter_raster)
