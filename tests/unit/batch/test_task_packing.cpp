#include "batch/task_packing.h"

#include <algorithm>
#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <numeric>
#include <random>

namespace wxl::batch {
namespace {

using testing::ElementsAre;

TEST(TaskPacking, Equal_costs_give_equal_tasks) {
    const std::vector<double> costs(6, 1.0);
    EXPECT_THAT(pack_tasks(costs, 3), ElementsAre(TaskWork{0, 1}, TaskWork{2, 3}, TaskWork{4, 5}));
    EXPECT_THAT(pack_tasks(costs, 1), ElementsAre(TaskWork{0, 1, 2, 3, 4, 5}));
}

TEST(TaskPacking, A_large_one_stands_alone_and_the_small_ones_share_the_rest) {
    // Share of three tasks: 12 / 3 = 4. The one of 8 stands alone; 4 x 1 in the two others.
    EXPECT_THAT(pack_tasks(std::vector{1.0, 8.0, 1.0, 1.0, 1.0}, 3),
                ElementsAre(TaskWork{0, 2}, TaskWork{1}, TaskWork{3, 4}));
}

TEST(TaskPacking, More_tasks_than_work_are_one_each) {
    EXPECT_THAT(pack_tasks(std::vector{1.0, 2.0, 3.0}, 10), ElementsAre(TaskWork{0}, TaskWork{1}, TaskWork{2}));
    EXPECT_THAT(pack_tasks({}, 10), ElementsAre());
    EXPECT_THAT(pack_tasks(std::vector{1.0}, 0), ElementsAre(TaskWork{0}));
}

TEST(TaskPacking, Work_without_a_cost_is_shared_by_number) {
    EXPECT_THAT(pack_tasks(std::vector<double>(4, 0.0), 2), ElementsAre(TaskWork{0, 1}, TaskWork{2, 3}));
}

TEST(TaskPacking, Work_without_a_cost_beside_whole_tasks_is_one_task) {
    EXPECT_THAT(pack_tasks(std::vector{1.0, 0.0, 1.0, 0.0}, 2), ElementsAre(TaskWork{0}, TaskWork{1, 3}, TaskWork{2}));
    EXPECT_THAT(pack_tasks(std::vector{1.0, 0.0}, 16), ElementsAre(TaskWork{0}, TaskWork{1}));
}

TEST(TaskPacking, Costs_that_are_no_numbers_count_as_nothing) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_THAT(pack_tasks(std::vector{nan, 1.0, infinity, -5.0, 1.0}, 1), ElementsAre(TaskWork{0, 1, 2, 3, 4}));
}

TEST(TaskPacking, Every_distribution_is_in_one_task_and_no_shared_task_is_twice_too_large) {
    std::mt19937 random(3);
    std::lognormal_distribution<double> cost(0.0, 2.0);
    for (int round = 0; round < 200; ++round) {
        std::vector<double> costs(1 + random() % 300);
        std::generate(costs.begin(), costs.end(), [&] { return cost(random); });
        const std::size_t wanted = 1 + random() % 40;
        const double share = std::accumulate(costs.begin(), costs.end(), 0.0) / static_cast<double>(wanted);
        std::vector<std::size_t> met;
        std::size_t before = 0;
        const auto tasks = pack_tasks(costs, wanted);
        EXPECT_LE(tasks.size(), wanted + 1);
        for (const TaskWork& work : tasks) {
            EXPECT_TRUE(std::is_sorted(work.begin(), work.end()));
            EXPECT_GE(work.front(), before);
            before = work.front();
            double sum = 0.0;
            for (const std::size_t i : work) sum += costs[i];
            EXPECT_TRUE(work.size() == 1 || sum < 2.0 * share + 1e-9) << sum;
            met.insert(met.end(), work.begin(), work.end());
        }
        std::sort(met.begin(), met.end());
        std::vector<std::size_t> all(costs.size());
        std::iota(all.begin(), all.end(), 0);
        EXPECT_EQ(met, all);
    }
}

TEST(TaskPacking, Usual_tasks_take_ten_minutes_and_are_never_more_than_a_job_array_takes) {
    EXPECT_EQ(usual_task_count(0.0), 1U);
    EXPECT_EQ(usual_task_count(600.0), 1U);
    EXPECT_EQ(usual_task_count(601.0), 2U);
    EXPECT_EQ(usual_task_count(1e12), 1000U);
}

}  // namespace
}  // namespace wxl::batch
