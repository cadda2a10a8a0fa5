#pragma once
#include "platform/pictures.h"

namespace wxl::files {

/// Pictures by GDAL's PNG driver.
class PngEncoder final : public platform::IPictureEncoder {
public:
    std::string Png(const platform::IndexedPicture& picture) override;
};

}  // namespace wxl::files
