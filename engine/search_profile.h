#pragma once
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

}  // namespace wxl::engine
