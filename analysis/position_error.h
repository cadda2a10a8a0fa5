#pragma once
// How far positions are off, as the table of the fixes tells: in metres, or by the classes of Argos.

#include "platform/features.h"
#include "platform/values.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace wxl::analysis {

/// The error of an animal's positions at the median.
struct PositionError {
    double Metres = 0.0;
    std::string Field;            ///< that tells it
    bool OfArgosClasses = false;  ///< made from the classes in the field
    friend bool operator==(const PositionError&, const PositionError&) = default;
};

/// The errors of an animal's fixes, in metres, as far as they are told.
struct PositionErrors {
    std::vector<double> Metres;
    std::vector<double> OfArgosClasses;
};

/// Error of an Argos location in metres, which 68 % of such locations do not pass (Costa et al. 2010: pinnipeds with
/// Fastloc GPS beside Argos); nothing for a text that is no class, and for class Z, which is no location. `name` in
/// capitals or not, blanks around it.
std::optional<double> argos_error(std::string_view name);

/// Whether a field tells the errors of positions, by its name and type.
bool tells_position_error(const platform::Field& field);

/// The fields of a layer that tell the errors of its positions: one of numbers with a usual name for errors in metres
/// (Movebank, e-obs, Argos, Telonics, Vectronic, Darwin Core), one with a usual name for classes of Argos. A dilution
/// of precision is none: it multiplies an error that the table does not tell.
class PositionErrorFields {
public:
    explicit PositionErrorFields(std::span<const platform::Field> fields);

    /// Names of the fields, none to two.
    std::vector<std::string> Names() const;

    /// Adds what the fix tells. No number, none above 0, and none of 1,000 km or more is an error.
    void Take(const platform::IFeature& fix, PositionErrors& errors) const;

    /// The median of the errors in metres where half of the fixes or more tell one, else that of the errors of their
    /// classes where half of them or more have one.
    std::optional<PositionError> Median(PositionErrors errors, std::size_t fixes) const;

private:
    struct Source {
        std::string Name;
        int Index = -1;
    };

    Source m_metres;
    Source m_classes;
};

}  // namespace wxl::analysis
