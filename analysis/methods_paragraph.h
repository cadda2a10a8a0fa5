#pragma once
#include "analysis/animal_fixes.h"
#include "analysis/record.h"
#include "tracking_times/time_facts.h"

#include <optional>
#include <string>
#include <vector>

namespace wxl::analysis {

/// What a publication says of a run in its methods, in plain English and from the run's own record: what Laver and
/// Kelly (2008) and Crane et al. (2021) ask reports of home ranges for. Figures are medians and ranges over animals.
/// What this run did not do is said too, so that nothing that they ask for is missing.
class MethodsParagraph {
public:
    MethodsParagraph() = default;

    /// @param program name and version
    MethodsParagraph(const RunFrame& frame, const GroupedFixes& animals, std::string program);

    /// Records come in the order of the run.
    void Add(const AnimalRecord& record);

    /// Without line breaks; empty while there is no record.
    std::string Text() const;

    /// The works that the text cites, in the order of their authors' names.
    std::vector<std::string> References() const;

private:
    /// One animal, whatever the number of its distributions.
    struct Animal {
        std::string NamingId;
        double Fixes = 0.0;
        std::int64_t Coincident = 0;
        tracking_times::TimeFacts Times;
        std::optional<double> Schoener;
        std::optional<double> SwihartSlade;
        std::optional<bool> Levels;  ///< whether its area curve reached an asymptote; nothing where there is none
        std::vector<std::optional<double>> PolygonAreas;  ///< one for each percentage
    };
    struct Distribution {
        double Value = 0.0;  ///< of a list
        double Bandwidth = 0.0;
        double Proportion = 0.0;  ///< of HREF; of the ad hoc method
        comparison::AdHocStatus AdHoc = comparison::AdHocStatus::kNoBandwidth;
        bool Minimized = false;
        double CellSize = 0.0;
        double Held = 0.0;                         ///< share on the raster
        std::vector<std::optional<double>> Areas;  ///< one for each percentage
    };

    std::string SampleText() const;
    std::string ChoiceText() const;
    std::string TimesText() const;
    std::string KernelText() const;
    std::string BandwidthText() const;
    std::string SearchText() const;
    std::string AdHocText() const;
    std::string FailureText() const;
    std::string ReachText() const;
    std::string IsoplethText() const;
    std::string IsoplethAreas(double value) const;
    std::string PolygonText() const;
    std::string CurveText() const;
    std::string IndependenceText() const;
    std::string AreaText(std::vector<double> areas) const;
    std::vector<double> Bandwidths() const;
    bool HasIndex() const;
    bool HasCurve() const;

    std::string m_program;
    Settings m_wanted;
    platform::SpatialReference m_reference;
    std::vector<double> m_values;
    std::int64_t m_withoutId = 0;
    bool m_withoutPlace = false;
    std::vector<Animal> m_animals;
    std::vector<Distribution> m_distributions;  ///< those that were computed
    std::size_t m_failed = 0;
};

}  // namespace wxl::analysis
