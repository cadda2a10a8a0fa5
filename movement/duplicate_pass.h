#pragma once
#include "movement/count_limit.h"
#include "movement/duplicate_index.h"
#include "movement/FrmPW.h"
#include "platform/map.h"
#include "platform/messages.h"

#include <memory>

namespace wxl::movement {

/// What a pass over duplicates works with.
struct DuplicatePass {
    platform::IMessages& Messages;
    platform::IMxDocument& Document;
    FrmPW& PleaseWait;
    CountLimit Limit;
};

/// For each fix of `cursor`, in its order, deletes the duplicates that `index` finds among the fixes of `selection`.
/// Fixes deleted already are passed over. Then redraws the map and tells how many were deleted.
///
/// The outcome is that of a walk over the whole selection for each fix of the cursor, in one pass. RuntimeError 6 for a
/// fix whose object ID exceeds the limit: the pass ends before it is compared, and earlier deletions stay.
///
/// @param withShape whether the index looks at locations
void remove_duplicates(const DuplicatePass& pass, std::unique_ptr<platform::IFeatureCursor> cursor,
                       platform::ISelectionSet& selection, IDuplicateIndex& index, bool withShape);

}  // namespace wxl::movement
