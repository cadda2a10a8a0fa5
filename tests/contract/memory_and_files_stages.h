#pragma once
#include "tests/contract/stage.h"

namespace wxl::tests {

StageChoice memory_stage(const std::string& rasterFormat = "GRID");
StageChoice files_stage(const std::string& rasterFormat = "GRID");

}  // namespace wxl::tests
