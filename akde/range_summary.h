#pragma once
#include "akde/range_record.h"

#include <string>

namespace wxl::akde {

/// The summary of a run as comma-separated text: a row for each animal and percentage; of an animal without a range one
/// that says why.
class RangeSummary {
public:
    /// The settings outlive the object.
    explicit RangeSummary(const RangeSettings& settings) : m_settings(settings) {}
    void Add(const RangeRecord& record);
    std::string Text() const;

private:
    const RangeSettings& m_settings;
    std::string m_rows;
};

}  // namespace wxl::akde
