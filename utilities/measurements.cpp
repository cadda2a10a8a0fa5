#include "platform/runtime_error.h"
#include "utilities/Utilities.h"

namespace wxl::utilities {

using platform::Geometry;
using platform::IGeometryOperators;

/// What distinguishes the three procedures from each other.
struct Utilities::Measurement {
    const char* Procedure;
    const char* Status;
    double (IGeometryOperators::*Measure)(const Geometry&);
};

bool Utilities::TableAddLength(platform::IFeatureClass& featureClass, std::string& sField, double& dFactor,
                               bool bYield) {
    if (sField.empty()) sField = "LENGTH";
    return AddMeasurement({"TableAddLength", "Calculating length field...", &IGeometryOperators::Length}, featureClass,
                          sField, dFactor, bYield);
}

bool Utilities::TableAddArea(platform::IFeatureClass& featureClass, std::string& sField, double& dFactor, bool bYield) {
    return AddMeasurement({"TableAddArea", "Calculating areas...", &IGeometryOperators::Area}, featureClass, sField,
                          dFactor, bYield);
}

bool Utilities::TableAddPerim(platform::IFeatureClass& featureClass, std::string& sField, double& dFactor,
                              bool bYield) {
    return AddMeasurement({"TableAddPerim", "Calculating perimeters...", &IGeometryOperators::Length}, featureClass,
                          sField, dFactor, bYield);
}

bool Utilities::AddMeasurement(const Measurement& measurement, platform::IFeatureClass& featureClass,
                               const std::string& sField, double& dFactor, bool bYield) {
    if (dFactor == 0.0) dFactor = 1.0;
    try {
        const std::optional<int> field = MeasurementField(featureClass.Table(), sField);
        if (!field) return false;

        m_services.Host->SetStatus(measurement.Status);
        const auto cursor = featureClass.Find({});
        while (const auto feature = cursor->NextFeature()) {
            const Geometry shape = feature->Shape();
            const double measured = shape.IsNull() ? 0.0 : (m_services.Geometry->*measurement.Measure)(shape);
            feature->SetValue(*field, measured * dFactor);
            feature->Store();
            if (bYield) m_services.Host->Yield();
        }
        cursor->Flush();
        return true;
    } catch (...) {
        ShowError(measurement.Procedure);
        return false;
    }
}

/// The double field of that name, made when needed; nothing when it cannot be made.
std::optional<int> Utilities::MeasurementField(platform::ITable& table, const std::string& sField) {
    const int found = table.FindField(sField);
    if (found >= 0) {
        if (table.Fields().at(static_cast<std::size_t>(found)).Type == platform::FieldType::kDouble) return found;
        table.DeleteField(found);
    }
    const int added = AddNewField(sField, table, platform::FieldType::kDouble);
    if (added >= 0) return added;
    m_services.Messages->Show({.Text =
                                   "Error: unable to add new length field to table. Please check you have supplied a "
                                   "valid field name and you have write access to the attribute table.",
                               .Title = "Error",
                               .Sign = platform::Icon::kExclamation,
                               .Kind = platform::BoxKind::kFault});
    return std::nullopt;
}

}  // namespace wxl::utilities
