# Geometry operators, vector data and the map document.
find_path(GEOS_INCLUDE_DIR geos_c.h REQUIRED)
find_library(GEOS_C_LIBRARY geos_c REQUIRED)
add_library(wxl_geos INTERFACE)
target_include_directories(wxl_geos SYSTEM INTERFACE ${GEOS_INCLUDE_DIR})
target_link_libraries(wxl_geos INTERFACE ${GEOS_C_LIBRARY})

wxl_room(adapter_geos SOURCES geos_geometry.cpp geos_operators.cpp DEPENDS wxl_platform wxl_geos)
