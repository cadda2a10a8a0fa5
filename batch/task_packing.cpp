#include "batch/task_packing.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

namespace wxl::batch {
namespace {

constexpr double kSecondsPerTask = 600.0;
constexpr double kMostTasks = 1000.0;

/// Without any cost to go by, all count the same.
std::vector<double> usable(std::span<const double> seconds) {
    std::vector<double> costs;
    for (const double cost : seconds) costs.push_back(std::isfinite(cost) ? std::max(cost, 0.0) : 0.0);
    if (std::all_of(costs.begin(), costs.end(), [](double cost) { return cost == 0.0; }))
        std::fill(costs.begin(), costs.end(), 1.0);
    return costs;
}

}  // namespace

std::vector<TaskWork> pack_tasks(std::span<const double> seconds, std::size_t wanted) {
    const std::vector<double> costs = usable(seconds);
    const double total = std::accumulate(costs.begin(), costs.end(), 0.0);
    const double share = total / static_cast<double>(std::max<std::size_t>(wanted, 1));
    std::vector<TaskWork> tasks;
    TaskWork small;
    double rest = 0.0;
    for (std::size_t i = 0; i < costs.size(); ++i) {
        if (costs[i] >= share) {
            tasks.push_back({i});
        } else {
            small.push_back(i);
            rest += costs[i];
        }
    }
    // A task ends where the sum so far reaches its multiple of the share: what one holds too much, the next holds less.
    const double smallShare = rest / static_cast<double>(wanted > tasks.size() ? wanted - tasks.size() : 1);
    double begun = 0.0;
    double goal = smallShare;
    TaskWork open;
    for (const std::size_t i : small) {
        open.push_back(i);
        begun += costs[i];
        if (begun < goal || !(smallShare > 0.0)) continue;
        tasks.push_back(std::exchange(open, {}));
        while (goal <= begun) goal += smallShare;
    }
    if (!open.empty()) tasks.push_back(std::move(open));
    std::sort(tasks.begin(), tasks.end(), [](const TaskWork& a, const TaskWork& b) { return a.front() < b.front(); });
    return tasks;
}

std::size_t usual_task_count(double seconds) {
    return static_cast<std::size_t>(std::clamp(std::ceil(seconds / kSecondsPerTask), 1.0, kMostTasks));
}

}  // namespace wxl::batch
