# One suite for the feature classes, layers and workspaces of every adapter.
wxl_test(contract_vector_memory SOURCES vector_contract.cpp memory_vector_host.cpp DEPENDS wxl_adapter_memory)
wxl_test(contract_vector_files SOURCES vector_contract.cpp files_vector_host.cpp vector_files.cpp DEPENDS wxl_adapter_ogr)
# One suite for the packages of every adapter.
wxl_test(
  test_contract_packages
  SOURCES
  test_packages.cpp
  DEPENDS
  wxl_adapter_memory
  wxl_adapter_ogr
  LABELS
  contract)
