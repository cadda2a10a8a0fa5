#pragma once
#include <string>

namespace wxl::files {

/// Whether coordinate systems may name grids of datum shifts that lie outside PROJ's own folders, in this whole
/// process. PROJ opens such files as soon as a coordinate system is read that names them. For a program of its own, not
/// for a plugin: whoever asked PROJ for something before asks anew.
void SetGridsElsewhereAllowed(bool allowed);

/// The last file elsewhere that PROJ asked for and did not get since the call before, although it is there; empty when
/// there was none.
std::string TakeRefusedGrid();

}  // namespace wxl::files
