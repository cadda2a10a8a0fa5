#pragma once
#include "akde/listener.h"

#include <string>
#include <vector>

namespace wxl::akde {

/// Keeps what it is told.
class KeptLines final : public IListener {
public:
    void Progress(double, std::string_view) override {}
    void EndProgress() override {}
    void Note(std::string_view line) override { Notes.emplace_back(line); }
    void Problem(std::string_view line) override { Problems.emplace_back(line); }
    bool IsStopped() const override { return false; }

    std::vector<std::string> Notes;
    std::vector<std::string> Problems;
};

}  // namespace wxl::akde
