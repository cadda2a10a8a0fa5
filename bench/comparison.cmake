# Overlap of all pairs.
wxl_bench(bench_comparison SOURCES comparison.cpp DEPENDS wxl_comparison)
