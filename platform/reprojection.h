#pragma once
#include "platform/map.h"

#include <optional>
#include <string>

namespace wxl::platform {

/// Where a layer in degrees belongs: the zone of the Universal Transverse Mercator grid at the centre of its extent,
/// and the zones that its features reach.
struct UtmTarget {
    int Zone = 1;
    bool South = false;
    int WesternZone = 1;  ///< of the westernmost feature
    int EasternZone = 1;  ///< of the easternmost feature, going east from the western one across the 180th meridian too

    std::string Name() const { return std::to_string(Zone) + (South ? "S" : "N"); }
    std::string Code() const { return "EPSG:" + std::to_string((South ? 32700 : 32600) + Zone); }
    bool SpansZones() const { return WesternZone != EasternZone; }
};

/// Makes copies of point layers in UTM, for analyses that need metres.
class IReprojection {
public:
    virtual ~IReprojection() = default;

    /// The zone for a layer in degrees; nothing when it has no features, or lies beyond 84 N and 80 S where there are
    /// no zones.
    virtual std::optional<UtmTarget> Target(const Layer& layer) = 0;

    /// Writes a copy of the layer in that zone (WGS 84), with its object IDs, cells, order, selection and looks,
    /// adds it to the map and returns its name, which no other layer has. RuntimeError when it cannot be written, or
    /// when a feature cannot be projected: then nothing is left behind.
    virtual std::string AddUtmCopy(const Layer& layer, const UtmTarget& target) = 0;
};

}  // namespace wxl::platform
