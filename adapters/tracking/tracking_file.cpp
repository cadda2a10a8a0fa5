#include "adapters/tracking/tracking_file.h"

#include "adapters/tracking/cell_text.h"
#include "adapters/tracking/file_rows.h"
#include "platform/runtime_error.h"

#include <algorithm>
#include <fmt/format.h>
#include <numeric>

namespace wxl::tracking {

Tracking::Tracking(ReadOptions options) : m_options(std::move(options)) {}

Tracking::~Tracking() = default;

Tracking::Tracking(Tracking&& other) noexcept
    : Animals(std::move(other.Animals)),
      Fixes(std::move(other.Fixes)),
      Others(std::move(other.Others)),
      Files(std::move(other.Files)),
      Rejected(std::move(other.Rejected)),
      Rows(other.Rows),
      m_options(std::move(other.m_options)),
      m_files(std::move(other.m_files)),
      m_indexOf(std::move(other.m_indexOf)) {
    for (auto& file : m_files) file->SetOwner(*this);
}

void Tracking::Add(std::unique_ptr<std::istream> source, const std::string& name, const std::string& animal,
                   const std::function<void(std::uint64_t)>& progress, const std::optional<Dialect>& dialect) {
    Files.push_back({});
    Files.back().Name = name;
    auto file = std::make_unique<FileRows>(std::move(source), name, m_files.size(), *this, dialect);
    m_files.push_back(std::move(file));
    m_files.back()->ReadAll(m_options.Animal.empty() ? animal : m_options.Animal, progress);
}

std::uint32_t Tracking::AnimalIndex(const std::string& name) {
    const auto next = static_cast<std::uint32_t>(Animals.size());
    const auto [entry, isNew] = m_indexOf.try_emplace(name, next);
    if (isNew) Animals.push_back(name);
    return entry->second;
}

std::size_t Tracking::OtherIndex(const std::string& name) {
    const auto found =
        std::find_if(Others.begin(), Others.end(), [&](const auto& other) { return other.Name == name; });
    if (found != Others.end()) return static_cast<std::size_t>(found - Others.begin());
    Others.push_back({name, {}});
    return Others.size() - 1;
}

void Tracking::Sort() {
    std::vector<std::uint32_t> order(Animals.size());
    std::iota(order.begin(), order.end(), 0U);
    std::sort(order.begin(), order.end(), [&](std::uint32_t a, std::uint32_t b) { return Animals[a] < Animals[b]; });
    std::vector<std::uint32_t> rank(Animals.size());
    std::vector<std::string> sorted;
    for (const std::uint32_t index : order) {
        rank[index] = static_cast<std::uint32_t>(sorted.size());
        sorted.push_back(std::move(Animals[index]));
    }
    Animals = std::move(sorted);
    for (TrackingFix& fix : Fixes) fix.Animal = rank[fix.Animal];
    const auto before = [](const TrackingFix& a, const TrackingFix& b) {
        if (a.Animal != b.Animal) return a.Animal < b.Animal;
        if (a.HasTime() != b.HasTime()) return a.HasTime();
        if (a.Seconds != b.Seconds) return a.Seconds < b.Seconds;
        return a.Place < b.Place;
    };
    if (!std::is_sorted(Fixes.begin(), Fixes.end(), before)) std::sort(Fixes.begin(), Fixes.end(), before);
}

void Tracking::ReadRow(const TrackingFix& fix, std::vector<platform::FieldValue>& values) {
    FileRows& file = *m_files[fix.File()];
    file.SeekTo(fix);
    values.resize(Others.size());
    for (std::size_t i = 0; i < Others.size(); ++i) values[i] = value_of_cell(file.Other(i), Others[i].Type.Type());
}

std::string Tracking::ReadCell(const TrackingFix& fix, std::size_t other) {
    FileRows& file = *m_files[fix.File()];
    file.SeekTo(fix);
    return to_utf8(file.Other(other));
}

std::string Tracking::ReadTime(const TrackingFix& fix) {
    FileRows& file = *m_files[fix.File()];
    file.SeekTo(fix);
    return shown(file.Time());
}

std::string Tracking::PlaceOf(const TrackingFix& fix) const {
    return fmt::format("{}, line {}", Files[fix.File()].Name, fix.Line);
}

void Tracking::Reject(const TrackingFix& fix, Reason why, const std::string& column, const std::string& value) {
    Rejected.Add({Files[fix.File()].Name, fix.Line, why, column, value});
}

}  // namespace wxl::tracking
