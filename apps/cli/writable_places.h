#pragma once
// Where each command may write, by its own options. SECURITY.md lists the same for the user.

#include "adapters/disk/write_fence.h"
#include "apps/cli/commands/akde.h"
#include "apps/cli/commands/bandwidth.h"
#include "apps/cli/commands/batch.h"
#include "apps/cli/commands/curve.h"
#include "apps/cli/commands/import.h"
#include "apps/cli/commands/info.h"
#include "apps/cli/commands/isopleths.h"
#include "apps/cli/commands/kde.h"
#include "apps/cli/commands/manual.h"
#include "apps/cli/commands/mcp.h"
#include "apps/cli/commands/models.h"
#include "apps/cli/commands/obs_fields.h"
#include "apps/cli/commands/overlap.h"
#include "apps/cli/commands/remove_duplicates.h"
#include "apps/cli/commands/stats.h"
#include "apps/cli/commands/track.h"

#include <optional>

namespace wxl::cli {

/// Nothing for a command that cannot be bound: what it starts is not ours, and would be bound with it.
using Fence = std::optional<files::WritablePlaces>;

Fence fence_of(const AkdeOptions& options);
Fence fence_of(const ImportOptions& options);
Fence fence_of(const InfoOptions& options);
Fence fence_of(const KdeOptions& given);
Fence fence_of(const BatchPlanOptions& options);
Fence fence_of(const BatchPlanAkdeOptions& options);
Fence fence_of(const BatchRunOptions& options);
Fence fence_of(const BatchMergeOptions& options);
Fence fence_of(const BatchStatusOptions& options);
Fence fence_of(const BatchSubmitOptions& options);
Fence fence_of(const BatchOverlapOptions& options);
Fence fence_of(const BandwidthOptions& options);
Fence fence_of(const StatsOptions& options);
Fence fence_of(const OverlapOptions& options);
Fence fence_of(const McpOptions& options);
Fence fence_of(const CurveOptions& options);
Fence fence_of(const IsoplethOptions& options);
Fence fence_of(const ObsFieldsOptions& options);
Fence fence_of(const RemoveDuplicatesOptions& options);
Fence fence_of(const TrackOptions& options);
Fence fence_of(const ModelsOptions& options);
Fence fence_of(const ManOptions& options);
Fence fence_of(const CompletionOptions& options);

}  // namespace wxl::cli
