#pragma once
#include "adapters/tracking/column_header.h"
#include "adapters/tracking/column_profile.h"

namespace wxl::tracking {

/// The column that names the animal.
struct AnimalColumn {
    std::size_t Column = 0;
    std::optional<std::size_t> Number;  ///< where the column is a name: one that may tell animals of one name apart
    bool ByContent = false;
};

/// Finds it: by the names of data bases, tag makers and languages, the individual before the tag; then any column whose
/// name speaks of an animal. Columns without a value, and those with another value in each of five rows or more, are
/// passed over. Nothing when there is none.
std::optional<AnimalColumn> find_animal(const ColumnHeader& header, const std::vector<ColumnProfile>& profiles);

}  // namespace wxl::tracking
