# Disk and rasters in memory.
wxl_room(adapter_memory_raster SOURCES memory_file_system.cpp memory_rasters.cpp DEPENDS wxl_platform)
