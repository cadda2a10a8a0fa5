# Tests of geometry operators and of vector data on disk.
wxl_test(geos_operators_test SOURCES geos_operators_test.cpp DEPENDS wxl_adapter_geos)
