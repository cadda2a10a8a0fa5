#pragma once
#include "batch/plan.h"

#include <cstddef>
#include <functional>
#include <map>
#include <utility>
#include <vector>

namespace wxl::batch {

/// The entries of all tasks in the order of the run, each task's in memory only between its first and its last.
template <class Entry>
class ResultsInOrder {
public:
    using Reader = std::function<std::vector<Entry>(std::size_t task)>;

    /// `read` gives the entries of a task (from 1). The plan outlives the object.
    ResultsInOrder(const PlanHead& plan, Reader read) : m_read(std::move(read)), m_places(plan.Distributions()) {
        for (std::size_t task = 0; task < plan.Tasks.size(); ++task)
            for (std::size_t i = 0; i < plan.Tasks[task].Work.size(); ++i)
                m_places.at(plan.Tasks[task].Work[i]) = {task, i};
    }

    std::size_t Size() const { return m_places.size(); }

    /// The next ones are to be taken one after the other.
    Entry Take(std::size_t distribution) {
        const auto [task, place] = m_places.at(distribution);
        auto open = m_open.find(task);
        if (open == m_open.end()) open = m_open.emplace(task, m_read(task + 1)).first;
        Entry entry = std::move(open->second.at(place));
        if (place + 1 == open->second.size()) m_open.erase(open);
        return entry;
    }

private:
    Reader m_read;
    std::vector<std::pair<std::size_t, std::size_t>> m_places;  ///< of every distribution: its task, its place there
    std::map<std::size_t, std::vector<Entry>> m_open;
};

}  // namespace wxl::batch
