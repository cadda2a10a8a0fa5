#include "adapters/tracking/odd_times.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <vector>

namespace wxl::tracking {

namespace {

constexpr std::int64_t kHour = 3600;
constexpr std::int64_t kDay = 24 * kHour;
constexpr std::int64_t kYear = 365 * kDay;
constexpr std::int64_t kThousandWeeks = kDay * 7 * 1024;
constexpr std::int64_t kLongestOfRollover = 5 * kYear;
constexpr std::int64_t kLifetime = kDay * 1461 * 20 / 4;
constexpr std::size_t kFewestOfMain = 3;

/// Days since 1970-01-01 of the starts of clocks: 1601-01-01, 1899-12-30, 1900-01-01, 1904-01-01, 1970-01-01,
/// 1980-01-01, 1980-01-06, 1999-08-22, 2000-01-01, 2001-01-01, 2019-04-07.
constexpr std::array<std::int64_t, 11> kStarts = {-134774, -25569, -25567, -24107, 0,    3652,
                                                  3657,    10825,  10957,  11323,  17993};

/// The start of a clock at which a time stands, in the clock of any zone.
std::optional<std::size_t> start_at(std::int64_t seconds) {
    for (std::size_t i = 0; i < kStarts.size(); ++i) {
        const std::int64_t since = seconds - kStarts[i] * kDay;
        if (since >= -14 * kHour && since < kDay + 14 * kHour) return i;
    }
    return std::nullopt;
}

/// Fixes of one animal without a long gap between their times.
struct Run {
    std::size_t Begin = 0;
    std::size_t End = 0;
    std::int64_t First = 0;  ///< seconds since 1970
    std::int64_t Last = 0;
    std::optional<OddTime> Odd;

    std::size_t Size() const { return End - Begin; }
};

class Finder {
public:
    Finder(std::span<const TrackingFix> fixes, bool haveClock) : m_fixes(fixes), m_haveClock(haveClock) {}

    std::array<OddFixes, kOddTimes> Find() {
        for (std::size_t begin = 0; begin < m_fixes.size();) {
            std::size_t end = begin;
            while (end < m_fixes.size() && m_fixes[end].Animal == m_fixes[begin].Animal) ++end;
            JudgeAnimal(begin, end);
            begin = end;
        }
        JudgeSuspects();
        return m_found;
    }

private:
    void FindRuns(std::size_t begin, std::size_t end) {
        m_runs.clear();
        for (std::size_t i = begin; i < end && m_fixes[i].HasTime(); ++i) {
            const std::int64_t seconds = m_fixes[i].Seconds;
            if (m_runs.empty() || seconds - m_runs.back().Last > kYear)
                m_runs.push_back({i, i, seconds, seconds, std::nullopt});
            m_runs.back().End = i + 1;
            m_runs.back().Last = seconds;
        }
    }

    void JudgeAnimal(std::size_t begin, std::size_t end) {
        FindRuns(begin, end);
        if (m_runs.empty()) return;
        const auto main = std::ranges::max_element(m_runs, {}, &Run::Size);
        m_main = static_cast<std::size_t>(main - m_runs.begin());
        if (main->Size() < kFewestOfMain || start_at(main->First)) {
            const bool wholly =
                std::ranges::all_of(m_runs, [](const Run& run) { return start_at(run.First).has_value(); });
            auto& judged = wholly ? m_suspects : m_others;
            judged.insert(judged.end(), m_runs.begin(), m_runs.end());
            return;
        }
        JudgeRuns();
        if (m_haveClock) JudgeEnds();
        ForgiveGaps();
        for (const Run& run : m_runs) {
            if (run.Odd) Count(run, *run.Odd);
            if (!run.Odd) m_others.push_back(run);
        }
    }

    bool IsFew(std::size_t size, std::size_t share) const { return size == 1 || size * share <= m_runs[m_main].Size(); }

    void JudgeRuns() {
        const Run& main = m_runs[m_main];
        for (Run& run : m_runs) {
            if (&run == &main) continue;
            if (start_at(run.First) && IsFew(run.Size(), 5)) run.Odd = OddTime::kClockStart;
            if (!run.Odd && m_haveClock && IsRolledOver(run)) run.Odd = OddTime::kRollover;
        }
    }

    bool IsRolledOver(const Run& run) const {
        const Run& main = m_runs[m_main];
        if (main.Last - main.First > kLongestOfRollover || !IsFew(run.Size(), 20)) return false;
        const std::int64_t shift = run.First < main.First ? kThousandWeeks : -kThousandWeeks;
        return run.First + shift >= main.First - 7 * kDay && run.Last + shift <= main.Last + 7 * kDay;
    }

    /// What lies beyond a gap longer than animals live.
    void JudgeEnds() {
        std::size_t first = m_main;
        std::size_t last = m_main;
        while (first > 0 && m_runs[first].First - m_runs[first - 1].Last <= kLifetime) --first;
        while (last + 1 < m_runs.size() && m_runs[last + 1].First - m_runs[last].Last <= kLifetime) ++last;
        JudgeEnd(0, first);
        JudgeEnd(last + 1, m_runs.size());
    }

    void JudgeEnd(std::size_t begin, std::size_t end) {
        std::size_t size = 0;
        for (std::size_t i = begin; i < end; ++i) size += m_runs[i].Odd ? 0 : m_runs[i].Size();
        if (!IsFew(size, 20)) return;
        for (std::size_t i = begin; i < end; ++i)
            if (!m_runs[i].Odd) m_runs[i].Odd = OddTime::kFarOff;
    }

    /// Leaves alone what is hardly farther off than the others are from one another.
    void ForgiveGaps() {
        std::int64_t longest = 0;
        const Run* before = nullptr;
        for (const Run& run : m_runs) {
            if (run.Odd) continue;
            if (before != nullptr) longest = std::max(longest, run.First - before->Last);
            before = &run;
        }
        std::vector<std::int64_t> distances;
        for (const Run& run : m_runs) distances.push_back(run.Odd ? DistanceOf(run) : 0);
        for (std::size_t i = 0; i < m_runs.size(); ++i)
            if (m_runs[i].Odd && distances[i] <= 2 * longest) m_runs[i].Odd.reset();
    }

    std::int64_t DistanceOf(const Run& odd) const {
        std::int64_t least = std::numeric_limits<std::int64_t>::max();
        for (const Run& run : m_runs)
            if (!run.Odd) least = std::min(least, distance(run, odd));
        return least;
    }

    static std::int64_t distance(const Run& a, const Run& b) {
        return a.First < b.First ? b.First - a.Last : a.First - b.Last;
    }

    /// Runs at the start of a clock whose animals have no other times to compare them with: the other animals have.
    void JudgeSuspects() {
        for (std::size_t start = 0; start < kStarts.size(); ++start) {
            std::size_t size = 0;
            Run all;
            for (const Run& run : m_suspects) {
                if (start_at(run.First) != start) continue;
                all.First = size == 0 ? run.First : std::min(all.First, run.First);
                all.Last = size == 0 ? run.Last : std::max(all.Last, run.Last);
                size += run.Size();
            }
            if (size == 0 || !AreFarFromOthers(all, size)) continue;
            for (const Run& run : m_suspects)
                if (start_at(run.First) == start) Count(run, OddTime::kClockStart);
        }
    }

    bool AreFarFromOthers(const Run& suspects, std::size_t size) const {
        std::size_t others = 0;
        for (const Run& run : m_others) {
            const bool apart = run.First - suspects.Last > kYear || suspects.First - run.Last > kYear;
            if (!apart) return false;
            others += run.Size();
        }
        return others >= kFewestOfMain && (size == 1 || size * 5 <= others);
    }

    void Count(const Run& run, OddTime why) {
        OddFixes& found = m_found.at(static_cast<std::size_t>(why));
        for (std::size_t i = run.Begin; i < run.End; ++i)
            if (found.Count++ == 0 || m_fixes[i].Place < m_fixes[found.First].Place) found.First = i;
    }

    std::span<const TrackingFix> m_fixes;
    bool m_haveClock;
    std::vector<Run> m_runs;  ///< of one animal, by time
    std::size_t m_main = 0;
    std::vector<Run> m_suspects;
    std::vector<Run> m_others;  ///< of all animals, not odd
    std::array<OddFixes, kOddTimes> m_found{};
};

}  // namespace

std::array<OddFixes, kOddTimes> find_odd_times(std::span<const TrackingFix> fixes, bool haveClock) {
    return Finder(fixes, haveClock).Find();
}

}  // namespace wxl::tracking
