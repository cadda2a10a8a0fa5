#include "platform/file_system.h"
#include "platform/runtime_error.h"
#include "utilities/Utilities.h"

namespace wxl::utilities {

namespace error_number = platform::error_number;
using platform::Raise;

ShapeFields Utilities::CreateShapeFields(platform::ShapeType geometryType, bool bHasZ, bool bHasM,
                                         const platform::SpatialReference& reference) const {
    if (bHasZ || bHasM) Raise(error_number::kInvalidCall, "Shapefiles with z or m values cannot be made.");
    return {.Fields = {{.Name = "OID", .Type = platform::FieldType::kObjectId},
                       {.Name = "Shape", .Type = platform::FieldType::kGeometry}},
            .Shape = geometryType,
            .Reference = reference};
}

std::shared_ptr<platform::IFeatureClass> Utilities::CreateOutputShapefile(
    const std::filesystem::path& sFolder, const std::string& sName, platform::ShapeType geometryType, bool bHasZ,
    bool bHasM, const std::optional<platform::SpatialReference>& reference, bool bOverwrite) {
    platform::CheckDatasetName(sName);
    const bool exists = m_services.Files->FileExists(sFolder / (sName + ".shp"));
    if (exists && !bOverwrite) {
        m_services.Messages->Show({.Text = "ERROR: file already exists. Cannot create output file.",
                                   .Title = "File Error",
                                   .Sign = platform::Icon::kCritical,
                                   .Kind = platform::BoxKind::kFault});
        return nullptr;
    }
    // Before the deletion, so that a refusal costs no files.
    const ShapeFields fields =
        CreateShapeFields(geometryType, bHasZ, bHasM, reference.value_or(platform::SpatialReference()));
    if (exists) DeleteSiblings(sFolder, sName);
    try {
        // The store makes the object identifier and geometry columns of a shapefile by itself.
        return m_services.Shapefiles->Create(
            sFolder, {.Name = sName, .Shape = fields.Shape, .Fields = {}, .Reference = fields.Reference});
    } catch (const platform::RuntimeError& error) {
        if (error.Number != error_number::kPathNotFound) throw;
        return nullptr;
    }
}

void Utilities::DeleteSiblings(const std::filesystem::path& sFolder, const std::string& sName) {
    for (const std::string& file : m_services.Files->List(sFolder)) {
        if (file.starts_with(sName + ".") && m_services.Files->FileExists(sFolder / file))
            m_services.Files->DeleteFile(sFolder / file, true);
    }
}

std::shared_ptr<platform::IFeatureClass> Utilities::OpenShapefile(const std::filesystem::path& sFolder,
                                                                  const std::string& sName) {
    try {
        return m_services.Shapefiles->Open(sFolder, sName);
    } catch (...) {
        ShowError("OpenShapefile");
        return nullptr;
    }
}

RasterWorkspace Utilities::OpenRasterWorkspace(const std::filesystem::path& sFolder) const {
    if (!m_services.Files->FolderExists(sFolder))
        Raise(error_number::kPathNotFound, "There is no folder \"" + sFolder.string() + "\".");
    return {m_services.Rasters, sFolder};
}

std::shared_ptr<platform::IRasterDataset> Utilities::OpenRasterDataset(const std::filesystem::path& sFolder,
                                                                       const std::string& sName) {
    try {
        const RasterWorkspace workspace = OpenRasterWorkspace(sFolder);
        return workspace.Store->Open(workspace.Folder, sName);
    } catch (...) {
        ShowError("OpenRasterDataset");
        return nullptr;
    }
}

std::optional<std::filesystem::path> Utilities::OpenTin(const std::filesystem::path& sFolder,
                                                        const std::string& sName) {
    try {
        if (!m_services.Tins->Exists(sFolder, sName)) return std::nullopt;
        return sFolder / sName;
    } catch (...) {
        ShowError("OpenTin");
        return std::nullopt;
    }
}

bool Utilities::DeleteFile(const std::filesystem::path& sFolder, const std::string& sName) {
    m_deleteFileTrace = "DeleteFile";
    try {
        platform::CheckDatasetName(sName);
        return DeleteDetected(sFolder, sName);
    } catch (...) {
        ShowError("DeleteFile", m_deleteFileTrace);
        return false;
    }
}

bool Utilities::DeleteDetected(const std::filesystem::path& sFolder, const std::string& sName) {
    const auto detected = [&](const char* what) { m_deleteFileTrace += std::string("\rDetected ") + what + "."; };
    if (!m_services.Files->FolderExists(sFolder)) return false;
    if (OpenShapefile(sFolder, sName)) {
        detected("shapefile");
        m_services.Shapefiles->Delete(sFolder, sName);
    } else if (OpenRasterDataset(sFolder, sName)) {
        detected("raster");
        m_services.Rasters->Delete(sFolder, sName);
    } else if (OpenTin(sFolder, sName)) {
        detected("tin");
        m_services.Tins->Delete(sFolder, sName);
    } else if (m_services.Files->FileExists(sFolder / sName)) {
        detected("regular file");
        m_services.Files->DeleteFile(sFolder / sName, false);
    } else {
        return false;
    }
    return true;
}

}  // namespace wxl::utilities
