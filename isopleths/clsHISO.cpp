#include "isopleths/clsHISO.h"

#include "isopleths/edge_closing.h"
#include "isopleths/isopleth_outputs.h"
#include "isopleths/level_index.h"
#include "isopleths/level_polygons.h"
#include "platform/contour_step.h"
#include "platform/runtime_error.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <span>
#include <utility>

namespace wxl::isopleths {

namespace error_number = platform::error_number;
using platform::Geometry;

namespace {

/// A band without a dataset, as what contouring asks for.
class BandDataset final : public platform::IRasterDataset {
public:
    explicit BandDataset(std::shared_ptr<platform::IRasterBand> band) : m_band(std::move(band)) {}
    std::string Name() const override { return {}; }
    platform::SpatialReference Reference() const override { return m_band->Reference(); }
    std::shared_ptr<platform::IRasterBand> Band() override { return m_band; }
    std::filesystem::path Path() const override { return {}; }

private:
    std::shared_ptr<platform::IRasterBand> m_band;
};

/// The closed contours of each level, in the order of the levels.
std::vector<std::vector<Ring>> contours_of(std::vector<platform::ContourLine> lines, std::span<const double> levels,
                                           const OuterEdge& edge) {
    const LevelIndex index(levels);
    std::vector<std::vector<platform::ContourLine>> byLevel(levels.size());
    for (platform::ContourLine& line : lines) byLevel[index.Nearest(line.Value)].push_back(std::move(line));

    const double step = platform::ContourStep(levels);
    std::vector<std::vector<Ring>> contours(levels.size());
    for (std::size_t i = 0; i < levels.size(); ++i) {
        // A level that repeats has its contours at its first place.
        if (index.IsFirst(i)) contours[i] = closed_contours(std::move(byLevel[i]), levels[i] - step, edge);
    }
    return contours;
}

/// Areas of the levels' polygons; a level that repeats an earlier one has its area.
std::vector<std::optional<double>> areas_of(std::span<const Geometry> polygons, std::span<const double> levels) {
    const LevelIndex index(levels);
    std::vector<std::optional<double>> areas(levels.size());
    for (std::size_t i = 0; i < levels.size(); ++i) {
        const Geometry& polygon = polygons[index.Nearest(levels[i])];
        if (!polygon.IsNull()) areas[i] = area_of(polygon);
    }
    return areas;
}

std::vector<std::int32_t> parts_of(std::span<const Geometry> polygons, std::span<const double> levels) {
    const LevelIndex index(levels);
    std::vector<std::int32_t> parts;
    for (const double level : levels) parts.push_back(outer_rings_of(polygons[index.Nearest(level)]));
    return parts;
}

/// The polygon of each level; a level that repeats an earlier one has its polygon.
std::vector<Geometry> polygons_of(std::span<const Geometry> polygons, std::span<const double> levels) {
    const LevelIndex index(levels);
    std::vector<Geometry> result;
    for (const double level : levels) result.push_back(polygons[index.Nearest(level)]);
    return result;
}

bool is_empty(const std::vector<std::vector<Ring>>& contours) {
    return std::ranges::all_of(contours, [](const auto& rings) { return rings.empty(); });
}

}  // namespace

clsHISO::clsHISO(const platform::Services& services, utilities::Utilities& utilities)
    : m_services(services), m_utilities(&utilities) {}

void clsHISO::SetIsoplethBoundaries(std::vector<double> dPercentages, std::int32_t lLowerBound) {
    m_boundaries = std::move(dPercentages);
    m_lowerBound = lLowerBound;
}

void clsHISO::SetRasterDataset(std::shared_ptr<platform::IRasterDataset> pDataset) {
    if (pDataset)
        m_dataset = std::move(pDataset);
    else
        m_errorStatus = isopleth_status::kNoDataset;
}

void clsHISO::SetRasterBand(std::shared_ptr<platform::IRasterBand> pBand) {
    if (pBand)
        m_band = std::move(pBand);
    else
        m_errorStatus = isopleth_status::kNoBand;
}

void clsHISO::SetOutputFolder(const std::filesystem::path& sFolder) {
    if (sFolder.empty())
        m_errorStatus = isopleth_status::kEmptyOutput;
    else
        m_outputFolder = sFolder;
}

void clsHISO::SetOutputName(const std::string& sName) {
    if (sName.empty())
        m_errorStatus = isopleth_status::kEmptyOutput;
    else
        m_outputName = sName;
}

bool clsHISO::IsReady() {
    const auto refuse = [this](std::int32_t status) {
        m_errorStatus = status;
        return false;
    };
    if (!m_dataset && !m_band) return refuse(isopleth_status::kNoRaster);
    if (!m_calculateLines && !m_calculatePolys && !m_calculateDonuts && !m_keepPolygons)
        return refuse(isopleth_status::kNothingWanted);
    if (m_outputFolder.empty() || m_outputName.empty()) return refuse(isopleth_status::kNoOutput);
    return true;
}

void clsHISO::CreateIsopleths() {
    if (!IsReady()) return;
    try {
        const auto dataset = m_dataset ? m_dataset : std::make_shared<BandDataset>(m_band);
        const auto band = dataset->Band();
        if (!band) platform::Raise(error_number::kObjectNotSet);
        FindLevels(*band);
        Produce(*dataset);
    } catch (...) {
        m_errorStatus = isopleth_status::kFailed;
        const platform::RuntimeError error = platform::CurrentError();
        m_services.Messages->Show({.Text = "CreateIsopleths " + std::to_string(m_errorStatus) + "\r" +
                                           std::to_string(error.Number) + "\r" + error.Description,
                                   .Title = "Error",
                                   .Sign = platform::Icon::kCritical,
                                   .Kind = platform::BoxKind::kFault});
    }
}

void clsHISO::FindLevels(platform::IRasterBand& band) {
    m_levels.clear();
    m_areas.clear();
    m_parts.clear();
    m_polygons.clear();
    m_statistics = band.ComputeStatistics();
    VolumeHistogram histogram(m_statistics.Minimum, m_statistics.Maximum);
    scan_surface(band, m_services.Host, m_edge, histogram);
    if (m_lowerBound != 0 || m_boundaries.empty()) platform::Raise(error_number::kSubscript);
    m_levels = histogram.Levels(m_boundaries);
}

void clsHISO::Produce(platform::IRasterDataset& dataset) {
    const platform::RasterGeometry geometry = dataset.Band()->Geometry();
    const OuterEdge edge(geometry, m_edge);
    Contours contours = contours_of(m_services.Contours->Contours(dataset, m_levels), m_levels, edge);
    if (is_empty(contours)) {
        m_areas.resize(m_levels.size());
        m_parts.resize(m_levels.size());
        m_errorStatus = isopleth_status::kNoContours;
        return;
    }
    // What is told is the area of what is drawn, and is told where only lines are drawn too.
    const std::vector<Geometry> polygons = Polygons(m_calculateLines ? contours : std::exchange(contours, {}));
    m_areas = areas_of(polygons, m_levels);
    m_parts = parts_of(polygons, m_levels);
    if (m_keepPolygons) m_polygons = polygons_of(polygons, m_levels);

    IsoplethOutputs outputs(*m_utilities);
    const OutputPlace place{m_outputFolder, m_outputName, dataset.Reference()};
    if (m_calculateLines) outputs.CreateLines(place);
    if (m_calculatePolys) outputs.CreatePolys(place);
    if (m_calculateDonuts) outputs.CreateDonuts(place);

    if (outputs.Lines) InsertLines(contours, outputs.Lines);
    if (outputs.Polys) InsertPolygons(polygons, outputs.Polys);
    if (outputs.Donuts) InsertDonuts(polygons, geometry.Bounds(), outputs.Donuts);
    Finish(outputs);
}

void clsHISO::InsertLines(const Contours& contours, OutputClass& lines) const {
    for (std::size_t i = 0; i < contours.size(); ++i) {
        for (const Ring& contour : contours[i])
            lines.Insert({platform::ShapeType::kPolyline, {}, {contour}}, {m_levels[i], m_boundaries[i]});
    }
}

std::vector<Geometry> clsHISO::Polygons(Contours contours) const {
    std::vector<Geometry> polygons(contours.size());
    for (std::size_t i = 0; i < contours.size(); ++i) {
        polygons[i] = level_polygon(std::move(contours[i]), *m_services.Geometry);
        m_services.Host->Yield();
    }
    return polygons;
}

void clsHISO::InsertPolygons(const std::vector<Geometry>& polygons, OutputClass& polys) const {
    for (std::size_t i = polygons.size(); i-- > 0;)
        if (!polygons[i].IsNull()) polys.Insert(polygons[i], {m_levels[i], m_boundaries[i]});
}

void clsHISO::InsertDonuts(const std::vector<Geometry>& polygons, const platform::Extent& bounds,
                           OutputClass& donuts) const {
    const LevelIndex index(m_levels);
    for (std::size_t i = 0; i < polygons.size(); ++i) {
        const Geometry& outer = polygons[i];
        if (outer.IsNull()) continue;
        if (i == 0) {
            donuts.Insert(outer, {m_statistics.Maximum, m_levels[0], 0.0, m_boundaries[0]});
        } else {
            // A percentage that shares an earlier one's level shares its polygon too.
            const Geometry& inner = polygons[index.Nearest(m_levels[i - 1])];
            const bool isNested = m_levels[i - 1] > m_levels[i] && !reaches_border(inner, bounds);
            const Geometry ring = isNested ? nested_ring(inner, outer, *m_services.Geometry)
                                           : ring_between(inner, outer, *m_services.Geometry);
            donuts.Insert(ring, {m_levels[i - 1], m_levels[i], m_boundaries[i - 1], m_boundaries[i]});
        }
        m_services.Host->Yield();
    }
}

void clsHISO::Finish(IsoplethOutputs& outputs) {
    outputs.Flush();
    outputs.Measure();
    // All features are flushed: an output that cannot be published does not cost the others.
    std::exception_ptr fault;
    Publish(outputs.Lines, m_lines, fault);
    Publish(outputs.Polys, m_polys, fault);
    Publish(outputs.Donuts, m_donuts, fault);
    if (fault) std::rethrow_exception(fault);
}

/// Gives an output its final name and makes it the result; the earlier result stays when it was not wanted or faults.
void clsHISO::Publish(const OutputClass& output, std::shared_ptr<platform::IFeatureClass>& result,
                      std::exception_ptr& firstFault) const {
    if (!output) return;
    try {
        m_services.Shapefiles->Publish(output.Class);
        result = output.Class;
    } catch (...) {
        if (!firstFault) firstFault = std::current_exception();
    }
}

}  // namespace wxl::isopleths
