#include "movement/FindDupxy.h"

#include "movement/error_labels.h"

namespace wxl::movement {

using namespace wxl::platform;
namespace labels = error_labels::xy_duplicates;

FindDupxy::FindDupxy(const Services& services, IPleaseWaitWindow& window)
    : DuplicateCommand(services, window,
                       {.ClickLabel = labels::kClick,
                        .CalcFeaturesLabel = labels::kCalcFeatures,
                        .SelectionOfLayerLabel = labels::kGetSelectionFrom2Layer,
                        .SelectionOfSelectedLayerLabel = labels::kGetSelectionFromActiveLayer,
                        .NoLayer = "Please select a points layer with some points selected.",
                        .WrongLayer = "You must select a points layer",
                        .LooksAtShapes = true,
                        .AsksForDocumentAtClick = true}) {}

CommandProperties FindDupxy::Properties() const {
    return {.Name = "RemoveDupsByxy",
            .Caption = "Remove X/Y Duplicates",
            .Tooltip = "Finds and Removes Duplicate points.",
            .Message = "Finds and Removes Duplicate points using the xy field."};
}

bool FindDupxy::Suits(IFeatureClass& features) const {
    return features.Shape() == ShapeType::kPoint;
}

std::unique_ptr<IDuplicateIndex> FindDupxy::MakeIndex(IFeatureClass& features) const {
    return std::make_unique<LocationIndex>(xy_tolerance(features.Reference()));
}

}  // namespace wxl::movement
