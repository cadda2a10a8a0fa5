#pragma once
#include "adapters/qgis/qgis_map.h"
#include "platform/reprojection.h"

namespace wxl::qgis {

/// Copies of point layers in UTM as GeoPackages: a memory layer would number its rows anew and be gone with the
/// session. The file stands in the project's folder, or else beside the layer's own file, or else in the folder for
/// temporary files.
class UtmCopies final : public platform::IReprojection {
public:
    explicit UtmCopies(Desktop desktop) : m_desktop(std::move(desktop)) {}

    std::optional<platform::UtmTarget> Target(const platform::Layer& layer) override;
    std::string AddUtmCopy(const platform::Layer& layer, const platform::UtmTarget& target) override;

private:
    Desktop m_desktop;
};

}  // namespace wxl::qgis
