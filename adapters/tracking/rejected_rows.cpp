#include "adapters/tracking/rejected_rows.h"

#include <numeric>

namespace wxl::tracking {

namespace {

struct Words {
    std::string_view Name;
    std::string_view Text;
};

constexpr std::array<Words, kReasons> kWords = {{{"not_visible", "not visible"},
                                                 {"outlier", "outliers"},
                                                 {"no_position", "without a position"},
                                                 {"no_animal", "without an animal"},
                                                 {"cells", "with too many or too few cells"},
                                                 {"position", "with a position that cannot be"},
                                                 {"time", "with a time that cannot be read"},
                                                 {"dop", "above the wanted DOP"},
                                                 {"argos_class", "of other Argos classes"},
                                                 {"no_key", "that belong to no part of the split"},
                                                 {"thinned", "thinned out"}}};

}  // namespace

std::string_view reason_name(Reason reason) {
    return kWords.at(static_cast<std::size_t>(reason)).Name;
}

std::string_view reason_text(Reason reason) {
    return kWords.at(static_cast<std::size_t>(reason)).Text;
}

std::int64_t RejectedRows::Total() const {
    return std::accumulate(m_counts.begin(), m_counts.end(), std::int64_t{0});
}

}  // namespace wxl::tracking
