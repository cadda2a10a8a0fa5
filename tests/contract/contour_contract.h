#pragma once
#include "platform/geometry_operators.h"
#include "tests/contract/stage.h"

#include <gtest/gtest.h>

namespace wxl::tests {

/// A contour operation with the place whose rasters it reads.
struct ContourChoice {
    StageChoice Where;
    std::function<std::unique_ptr<platform::IContourOperation>()> Make;
};

inline std::ostream& operator<<(std::ostream& out, const ContourChoice& choice) {
    return out << choice.Where.Name;
}

/// What every IContourOperation does. Instantiate with the adapters to try.
class ContourContract : public testing::TestWithParam<ContourChoice> {
protected:
    void SetUp() override {
        m_stage = GetParam().Where.Make();
        m_operation = GetParam().Make();
    }

    std::vector<platform::ContourLine> Contours(const platform::RasterGeometry& geometry, std::span<const float> cells,
                                                const std::vector<double>& levels);

private:
    std::unique_ptr<Stage> m_stage;
    std::unique_ptr<platform::IContourOperation> m_operation;
};

}  // namespace wxl::tests
