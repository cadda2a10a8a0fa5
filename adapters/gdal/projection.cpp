#include "adapters/gdal/projection.h"

#include "adapters/gdal/gdal_support.h"
#include "adapters/gdal/gdal_versions.h"
#include "platform/runtime_error.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <memory>
#include <numbers>
#include <string_view>
#include <vector>

namespace wxl::files {

namespace {

using platform::Point;

double within_half_turn(double degrees) {
    return degrees - 360.0 * std::floor((degrees + 180.0) / 360.0);
}

/// The middle value; the mean of the two middle values of an even count.
double median(std::vector<double>& values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    if (values.size() % 2 == 1) return *middle;
    return (*middle + *std::max_element(values.begin(), middle)) / 2.0;
}

bool is_mercator(const OGRSpatialReference& reference) {
    const GdalErrors errors;
    const char* projection = reference.GetAttrValue("PROJECTION");
    if (projection == nullptr) projection = reference.GetAttrValue("METHOD");
    const std::string_view name = projection == nullptr ? "" : projection;
    const auto has = [&](std::string_view part) { return name.find(part) != std::string_view::npos; };
    return has("Mercator") && !has("Transverse") && !has("Oblique");
}

/// The place in degrees, or nothing where it has none.
std::optional<Point> degrees_of(const OGRSpatialReference& reference, const Point& where) {
    const GdalErrors errors;
    const std::unique_ptr<OGRSpatialReference> degrees(reference.CloneGeogCS());
    if (!degrees) return std::nullopt;
    degrees->SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
    const std::unique_ptr<OGRCoordinateTransformation> transformation(
        OGRCreateCoordinateTransformation(&reference, degrees.get()));
    Point place = where;
    if (!transformation || transformation->Transform(1, &place.X, &place.Y) == 0) return std::nullopt;
    return std::isfinite(place.X) && std::abs(place.Y) < 90.0 ? std::optional(place) : std::nullopt;
}

}  // namespace

std::string UtmZone::Name() const {
    return fmt::format("{}{}", Number, South ? 'S' : 'N');
}

std::string UtmZone::Code() const {
    return fmt::format("EPSG:{}", (South ? 32700 : 32600) + Number);
}

double UtmZone::MiddleDegrees() const {
    return Number * 6.0 - 183.0;
}

std::optional<UtmZone> utm_zone_of(const Point& degrees) {
    if (!(degrees.Y >= -80.0 && degrees.Y <= 84.0) || !std::isfinite(degrees.X)) return std::nullopt;
    const double east = within_half_turn(degrees.X) + 180.0;
    return UtmZone{std::clamp(static_cast<int>(east / 6.0) + 1, 1, 60), degrees.Y < 0.0};
}

Point median_position(std::span<const Point> degrees) {
    std::vector<double> values;
    values.reserve(degrees.size());
    const double first = degrees.front().X;
    for (const Point& point : degrees) values.push_back(first + within_half_turn(point.X - first));
    const double longitude = within_half_turn(median(values));
    values.clear();
    for (const Point& point : degrees) values.push_back(point.Y);
    return {longitude, median(values)};
}

struct PointProjector::Way {
    static constexpr std::size_t kAtOnce = 4096;

    std::unique_ptr<OGRCoordinateTransformation> Transformation;
    std::vector<double> X = std::vector<double>(kAtOnce);
    std::vector<double> Y = std::vector<double>(kAtOnce);
    std::vector<int> Done = std::vector<int>(kAtOnce);
};

PointProjector::PointProjector(const platform::SpatialReference& from, const platform::SpatialReference& to)
    : m_way(std::make_unique<Way>()) {
    const GdalErrors errors;
    const OGRSpatialReference source = ToOgr(from);
    const OGRSpatialReference target = ToOgr(to);
    m_way->Transformation.reset(OGRCreateCoordinateTransformation(&source, &target));
    if (!m_way->Transformation)
        platform::Raise(platform::error_number::kInvalidCall,
                        fmt::format("no transformation from {} to {}: {}", from.Name, to.Name, errors.Text()));
}

PointProjector::~PointProjector() = default;

std::optional<std::size_t> PointProjector::Project(std::span<Point> points) {
    const GdalErrors errors;
    Way& way = *m_way;
    for (std::size_t start = 0; start < points.size(); start += Way::kAtOnce) {
        const std::size_t count = std::min(Way::kAtOnce, points.size() - start);
        for (std::size_t i = 0; i < count; ++i) {
            way.X[i] = points[start + i].X;
            way.Y[i] = points[start + i].Y;
        }
        way.Transformation->Transform(static_cast<TransformCount>(count), way.X.data(), way.Y.data(), nullptr,
                                      way.Done.data());
        for (std::size_t i = 0; i < count; ++i) {
            if (way.Done[i] == 0 || !std::isfinite(way.X[i]) || !std::isfinite(way.Y[i])) return start + i;
            points[start + i] = {way.X[i], way.Y[i]};
        }
    }
    return std::nullopt;
}

std::optional<std::size_t> project(std::span<Point> points, const platform::SpatialReference& from,
                                   const platform::SpatialReference& to) {
    return PointProjector(from, to).Project(points);
}

bool is_mercator(const platform::SpatialReference& reference) {
    return is_mercator(ToOgr(reference));
}

std::optional<MercatorStretch> mercator_stretch(const platform::SpatialReference& reference, const Point& where) {
    const OGRSpatialReference mercator = ToOgr(reference);
    if (!is_mercator(mercator)) return std::nullopt;
    const auto place = degrees_of(mercator, where);
    if (!place) return std::nullopt;
    constexpr double kRadians = std::numbers::pi / 180.0;
    const double parallel = mercator.GetNormProjParm(SRS_PP_STANDARD_PARALLEL_1, 0.0);
    const double scale = mercator.GetNormProjParm(SRS_PP_SCALE_FACTOR, 1.0);
    const double length = scale * std::cos(parallel * kRadians) / std::cos(place->Y * kRadians);
    return MercatorStretch{*place, length * length};
}

}  // namespace wxl::files
