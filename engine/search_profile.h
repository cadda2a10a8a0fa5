#pragma once
#include <optional>
#include <vector>

namespace wxl::engine {

/// One row of a bandwidth search. A row that the search did not reach is (0, 0).
struct ProfileRow {
    double Bandwidth = 0.0;  ///< in the units of the sample searched
    double Score = 0.0;      ///< LSCV or BCV score
    friend bool operator==(const ProfileRow&, const ProfileRow&) = default;
};

/// The scores of a bandwidth search in the order of evaluation.
using SearchProfile = std::vector<ProfileRow>;

/// The profile without the rows at its end that the search did not reach.
SearchProfile ReachedRows(SearchProfile profile);

/// The first of the rows with the smallest score; rows that hold no finite numbers do not count. The rows that the
/// search did not reach must have been left out.
std::optional<ProfileRow> SmallestScore(const SearchProfile& reached);

/// The rows inside the profile at which the score has a minimum, in the order of the profile; of equal scores in a row
/// the first. A dip that is no deeper than rounding makes it (1E-9 of the largest score) is none.
SearchProfile LocalMinima(const SearchProfile& reached);

}  // namespace wxl::engine
