# Projections and zones.
find_package(fmt REQUIRED)

wxl_room(adapter_files_projection SOURCES projection.cpp DEPENDS wxl_platform wxl_adapter_gdal PRIVATE_DEPENDS fmt::fmt)
