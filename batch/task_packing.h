#pragma once
#include <cstddef>
#include <span>
#include <vector>

namespace wxl::batch {

/// The distributions of a batch that one process computes, ascending.
using TaskWork = std::vector<std::size_t>;

/// Packs distributions, given by their estimated seconds, into about `wanted` tasks (at least 1) of roughly equal cost.
///
/// One that costs as much as a whole task or more stands alone; the others are filled in their order into tasks that
/// are closed when they hold their share. Every distribution is in exactly one task; the tasks are in the order of
/// their first distributions, so that a merge meets them nearly one after the other. Costs that are no positive number
/// count as nothing.
std::vector<TaskWork> pack_tasks(std::span<const double> seconds, std::size_t wanted);

/// How many tasks a batch of that many seconds in all is cut into where nobody says: of about ten minutes each, at most
/// 1,000, which job arrays take everywhere.
std::size_t usual_task_count(double seconds);

}  // namespace wxl::batch
