#include "movement/FIndDupTime2.h"

#include "movement/error_labels.h"
#include "movement/time2.h"

namespace wxl::movement {

using namespace wxl::platform;
namespace labels = error_labels::time2_duplicates;

FIndDupTime2::FIndDupTime2(const Services& services, IPleaseWaitWindow& window)
    : DuplicateCommand(services, window,
                       {.ClickLabel = labels::kClick,
                        .CalcFeaturesLabel = labels::kCalcFeatures,
                        .SelectionOfLayerLabel = labels::kGetSelectionFrom2Layer,
                        .SelectionOfSelectedLayerLabel = labels::kGetSelectionFromActiveLayer,
                        .NoLayer = "Please select points layer",
                        .WrongLayer = "You must select points layer with a Time2 field",
                        .LooksAtShapes = false,
                        .AsksForDocumentAtClick = false}) {}

CommandProperties FIndDupTime2::Properties() const {
    return {.Name = "RemoveDupsByTime2",
            .Caption = "Remove Time2 Field Duplicates",
            .Tooltip = "Finds and Removes Duplicate points using the time2 field.",
            .Message = "Finds and Removes Duplicate points using the time2 field."};
}

bool FIndDupTime2::Suits(IFeatureClass& features) const {
    return features.Table().FindField(kTime2Field) >= 0 && features.Shape() == ShapeType::kPoint;
}

std::unique_ptr<IDuplicateIndex> FIndDupTime2::MakeIndex(IFeatureClass& features) const {
    return std::make_unique<Time2Index>(features.Table().FindField(kTime2Field));
}

}  // namespace wxl::movement
