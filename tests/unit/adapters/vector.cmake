# Tests of geometry operators and of vector data on disk.
wxl_test(test_geos_operators SOURCES test_geos_operators.cpp DEPENDS wxl_adapter_geos)
