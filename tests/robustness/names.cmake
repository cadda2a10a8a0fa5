wxl_test(test_hostile_names SOURCES test_hostile_names.cpp hostile_names.cpp DEPENDS wxl_cli)
