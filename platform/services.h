#pragma once
#include "platform/clock.h"
#include "platform/distortion.h"
#include "platform/file_system.h"
#include "platform/folder_lock.h"
#include "platform/geometry_operators.h"
#include "platform/map.h"
#include "platform/messages.h"
#include "platform/packages.h"
#include "platform/pictures.h"
#include "platform/reprojection.h"
#include "platform/workspaces.h"

namespace wxl::platform {

/// Everything that a tool may ask for, handed to it as one value. The pointed-to services outlive the tools.
struct Services {
    IMessages* Messages = nullptr;
    IFileDialogs* Dialogs = nullptr;
    IHost* Host = nullptr;
    IClock* Clock = nullptr;
    IFileSystem* Files = nullptr;
    IFolders* Folders = nullptr;
    ITempPath* TempPath = nullptr;
    IRasterWorkspace* Rasters = nullptr;
    IShapefileWorkspace* Shapefiles = nullptr;
    IPackages* Packages = nullptr;
    ITinWorkspace* Tins = nullptr;
    IGeometryOperators* Geometry = nullptr;
    IContourOperation* Contours = nullptr;
    IFolderLocks* Locks = nullptr;
    IReprojection* Reprojection = nullptr;  ///< null where there is no map to add layers to
    IPictureEncoder* Pictures = nullptr;
    IDistortions* Distortions = nullptr;  ///< null where nothing knows
};

}  // namespace wxl::platform
