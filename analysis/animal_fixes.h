#pragma once
#include "analysis/position_error.h"
#include "platform/map.h"
#include "platform/values.h"
#include "tracking_times/time_facts.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace wxl::analysis {

/// One animal's fixes in the layer's order.
struct AnimalFixes {
    platform::FieldValue Id;
    std::string NamingId;  ///< stands in the names of the animal's output
    std::vector<platform::Point> Fixes;
    std::string Subfolder = {};  ///< of the output folder, takes the animal's datasets; empty: the folder itself
    std::int64_t StepsBack = 0;  ///< fixes earlier than the one before them, as far as a field of the layer tells
    tracking_times::TimeFacts Times = {};     ///< as far as a field of the layer tells
    std::optional<PositionError> Error = {};  ///< of the positions; as far as fields of the layer tell
};

/// The points of a layer, grouped by animal.
struct GroupedFixes {
    std::vector<AnimalFixes> Animals;  ///< ascending by ID
    bool TextIds = false;              ///< the ID field is text, so that naming IDs were generated
    bool NullGeometry = false;         ///< at least one point has no (finite) location; such points are in no group
    std::int64_t WithoutId = 0;        ///< points without a value in the ID field; they belong to no animal
};

/// Whether IDs of this type need generated naming IDs.
bool IsTextId(platform::FieldType type);

/// Groups the points of `layer`, or only its selected ones, by the value of the field `idField`, in one pass.
///
/// Points whose ID is missing, an empty text or not a number (NaN) are counted in WithoutId and left out. An animal all
/// of whose points lack a location is kept, with no fixes. Naming IDs are "1", "2", "3" ... in the order of the animals
/// where the field is text, otherwise the ID itself as text. RuntimeError 91 when the layer has no feature class,
/// 9 when it has no such field.
GroupedFixes GroupFixes(platform::IFeatureLayer& layer, std::string_view idField, bool selectedOnly);

}  // namespace wxl::analysis
