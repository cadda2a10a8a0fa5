# Feature classes, layers, maps, messages, dialogs, host and clock in memory.
wxl_room(
  adapter_memory_vector
  SOURCES
  memory_feature_class.cpp
  memory_map.cpp
  memory_services.cpp
  memory_shapefile_workspace.cpp
  DEPENDS
  wxl_platform)
