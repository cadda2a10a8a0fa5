# Broken files, and files that lead elsewhere, through the commands of the program.
wxl_test(
  test_malformed
  SOURCES
  hostile_databases.cpp
  limited_run.cpp
  test_hostile_geopackages.cpp
  test_indirect_inputs.cpp
  test_long_texts.cpp
  test_malformed_grids.cpp
  test_malformed_shapefiles.cpp
  test_malformed_tables.cpp
  DEPENDS
  wxl_cli
  LABELS
  no-coverage)
