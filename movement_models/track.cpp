#include "movement_models/track.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace wxl::movement_models {

namespace {

/// |Sigma| at or below this share of the product of its variances is that of a line.
constexpr double kFlat = 1e-15;

constexpr std::size_t kLeastFixes = 3;

std::vector<std::size_t> order_by_time(std::span<const double> times) {
    std::vector<std::size_t> order(times.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) { return times[a] < times[b]; });
    return order;
}

/// Keeps the first of the fixes of one time, counts the others.
void leave_out_equal_times(PreparedTrack& track, std::span<const double> times, std::span<const platform::Point> fixes,
                           const std::vector<std::size_t>& order) {
    for (const std::size_t place : order) {
        if (track.Order.empty() || times[track.Order.back()] != times[place]) {
            track.Order.push_back(place);
            continue;
        }
        if (fixes[track.Order.back()] == fixes[place]) {
            ++track.Repeats;
            continue;
        }
        if (track.Conflicts++ > 0) continue;
        track.FirstConflict[0] = track.Order.back();
        track.FirstConflict[1] = place;
    }
}

double mean_from(const std::vector<double>& values) {
    double sum = 0.0;
    for (const double value : values) sum += value;
    return sum / static_cast<double>(values.size());
}

/// From the first fix to the mean: the second shift takes away what a first fix far from the others would leave.
double centre(std::vector<double>& values, double first) {
    for (double& value : values) value -= first;
    const double mean = mean_from(values);
    for (double& value : values) value -= mean;
    return first + mean;
}

void place_fixes(PreparedTrack& track, std::span<const double> times, std::span<const platform::Point> fixes) {
    Track& kept = track.Fixes;
    for (const std::size_t place : track.Order) {
        kept.Times.push_back(times[place] - times[track.Order.front()]);
        kept.X.push_back(fixes[place].X);
        kept.Y.push_back(fixes[place].Y);
    }
    if (kept.X.empty()) return;
    kept.Origin = {centre(kept.X, kept.X.front()), centre(kept.Y, kept.Y.front())};
}

bool never_moved(const std::vector<std::size_t>& order, std::span<const platform::Point> fixes) {
    return std::all_of(order.begin(), order.end(),
                       [&](std::size_t place) { return fixes[place] == fixes[order.front()]; });
}

bool on_a_line(const Track& track) {
    double xx = 0.0;
    double xy = 0.0;
    double yy = 0.0;
    for (std::size_t i = 0; i < track.Size(); ++i) {
        xx += track.X[i] * track.X[i];
        xy += track.X[i] * track.Y[i];
        yy += track.Y[i] * track.Y[i];
    }
    return xx * yy - xy * xy <= kFlat * xx * yy;
}

TrackProblem problem_of(const PreparedTrack& track, std::span<const platform::Point> fixes) {
    if (track.Conflicts > 0) return TrackProblem::kTwoPlacesAtOneTime;
    if (track.Order.size() < kLeastFixes) return TrackProblem::kTooFewFixes;
    return never_moved(track.Order, fixes) ? TrackProblem::kNeverMoved : TrackProblem::kNone;
}

std::vector<double> steps_of(const std::vector<double>& times) {
    std::vector<double> steps;
    for (std::size_t i = 1; i < times.size(); ++i) steps.push_back(times[i] - times[i - 1]);
    return steps;
}

}  // namespace

double Track::ShortestStep() const {
    const std::vector<double> steps = steps_of(Times);
    return steps.empty() ? 0.0 : *std::min_element(steps.begin(), steps.end());
}

double Track::MedianStep() const {
    std::vector<double> steps = steps_of(Times);
    if (steps.empty()) return 0.0;
    const auto middle = steps.begin() + static_cast<std::ptrdiff_t>(steps.size() / 2);
    std::nth_element(steps.begin(), middle, steps.end());
    if (steps.size() % 2 == 1) return *middle;
    return 0.5 * (*std::max_element(steps.begin(), middle) + *middle);
}

PreparedTrack prepare_track(std::span<const double> times, std::span<const platform::Point> fixes) {
    PreparedTrack track;
    track.Given = fixes.size();
    track.Sorted = std::is_sorted(times.begin(), times.end());
    leave_out_equal_times(track, times, fixes, order_by_time(times));
    place_fixes(track, times, fixes);
    track.Problem = problem_of(track, fixes);
    track.OnALine = on_a_line(track.Fixes);
    return track;
}

}  // namespace wxl::movement_models
