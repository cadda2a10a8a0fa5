#pragma once
#include "adapters/qgis/result_catalogue.h"

#include <qgsprocessingcontext.h>

namespace wxl::qgis {

/// Has the datasets of a run loaded when the algorithm is done, with the names, styles and group that the dialog gives
/// them.
void load_on_completion(const ResultCatalogue& results, QgsProcessingContext& context);

}  // namespace wxl::qgis
