#include "adapters/raster/contour_operation.h"
#include "tests/contract/contour_contract.h"
#include "tests/contract/file_system_contract.h"
#include "tests/contract/memory_and_files_stages.h"
#include "tests/contract/raster_contract.h"

namespace wxl::tests {
namespace {

std::string name_of(const testing::TestParamInfo<StageChoice>& info) {
    return info.param.Name;
}

std::string contour_name_of(const testing::TestParamInfo<ContourChoice>& info) {
    return info.param.Where.Name;
}

ContourChoice contours_of(const StageChoice& where) {
    return {where, [] { return std::make_unique<files::ContourOperation>(); }};
}

INSTANTIATE_TEST_SUITE_P(Adapters, FileSystemContract, testing::Values(memory_stage(), files_stage()), name_of);

INSTANTIATE_TEST_SUITE_P(Adapters, RasterContract,
                         testing::Values(memory_stage("GRID"), memory_stage("GTiff"), files_stage("GRID"),
                                         files_stage("GTiff")),
                         name_of);

INSTANTIATE_TEST_SUITE_P(Adapters, ContourContract,
                         testing::Values(contours_of(memory_stage("GRID")), contours_of(files_stage("GRID")),
                                         contours_of(files_stage("GTiff"))),
                         contour_name_of);

}  // namespace
}  // namespace wxl::tests
