# Movement models beside the dense matrix, and the study of how often limits hold the truth.
wxl_bench(bench_movement_models SOURCES movement_models.cpp ${CMAKE_SOURCE_DIR}/tests/unit/movement_models/dense_twin.cpp
          DEPENDS wxl_movement_models)
add_executable(coverage_study coverage_study.cpp)
add_dependencies(benchmarks coverage_study)
target_link_libraries(coverage_study PRIVATE wxl_flags wxl_movement_models)
