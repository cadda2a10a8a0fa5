#pragma once
#include "adapters/disk/disk_file_system.h"
#include "adapters/disk/folder_lock.h"
#include "adapters/disk/system_clock.h"
#include "adapters/gdal/distortions.h"
#include "adapters/geos/geos_operators.h"
#include "adapters/ogr/geo_packages.h"
#include "adapters/ogr/shapefile_workspace.h"
#include "adapters/raster/contour_operation.h"
#include "adapters/raster/png_encoder.h"
#include "adapters/raster/raster_workspace.h"
#include "platform/services.h"

namespace wxl::files {

/// Everything that lies on this machine, whatever the host: clock, disk, datasets, geometry.
class DiskServices {
public:
    DiskServices() = default;
    DiskServices(const DiskServices&) = delete;
    DiskServices& operator=(const DiskServices&) = delete;

    /// `services` with all but the messages, dialogs and host set; this object must outlive it.
    platform::Services Complete(platform::Services services) {
        services.Clock = &m_clock;
        services.Files = &m_files;
        services.Folders = &m_folders;
        services.TempPath = &m_tempPath;
        services.Rasters = &m_rasters;
        services.Shapefiles = &m_shapefiles;
        services.Packages = &m_packages;
        services.Tins = &m_tins;
        services.Geometry = &m_geometry;
        services.Contours = &m_contours;
        services.Locks = &m_locks;
        services.Pictures = &m_pictures;
        services.Distortions = &m_distortions;
        return services;
    }

private:
    SystemClock m_clock;
    DiskFileSystem m_files;
    DiskFolders m_folders;
    SystemTempPath m_tempPath;
    RasterWorkspace m_rasters{m_files, m_folders};
    TinWorkspace m_tins{m_files, m_folders};
    ShapefileWorkspace m_shapefiles;
    GeoPackages m_packages{m_files};
    GeosOperators m_geometry;
    ContourOperation m_contours;
    FolderLocks m_locks{m_files, m_folders, m_clock};
    PngEncoder m_pictures;
    Distortions m_distortions;
};

}  // namespace wxl::files
