#pragma once

namespace wxl::host::error_labels {

/// Labels of the error reports of the commands that open a dialog, followed at once by the error number.
inline constexpr const char* kKernelDensity = "clsKDETool_OnClick sub Error number: ";
inline constexpr const char* kAbout = "clsAbout_OnClick sub Error number: ";

}  // namespace wxl::host::error_labels
