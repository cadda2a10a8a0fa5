#include "platform/runtime_error.h"
#include "utilities/Utilities.h"

#include <set>

namespace wxl::utilities {

namespace error_number = platform::error_number;
using platform::FieldValue;
using platform::Raise;

int Utilities::AddNewField(const std::string& sName, platform::ITable& table, platform::FieldType type,
                           std::optional<int> length, std::optional<int> precision) {
    try {
        if (table.FindField(sName) >= 0)
            Raise(error_number::kInvalidCall, "The table has a field \"" + sName + "\" already.");
        return table.AddField(
            {.Name = sName, .Type = type, .Length = length.value_or(0), .Precision = precision.value_or(0)});
    } catch (...) {
        ShowError("AddNewField", "Name: " + sName + ", Type: " + std::to_string(static_cast<std::int32_t>(type)));
        return -1;
    }
}

std::vector<FieldValue> Utilities::GetUniqueValues(platform::IFeatureClass& table, const std::string& sField) {
    try {
        const int field = table.Table().FindField(sField);
        if (field < 0) Raise(error_number::kInvalidCall, "There is no field \"" + sField + "\".");

        std::set<FieldValue, decltype(&platform::ValueLess)> values(&platform::ValueLess);
        const auto cursor = table.Find({.Where = std::nullopt, .WithShape = false});
        while (const auto feature = cursor->NextFeature()) {
            FieldValue value = feature->Value(field);
            if (!platform::IsMissing(value)) values.insert(std::move(value));
        }
        return {values.begin(), values.end()};
    } catch (...) {
        ShowError("GetUniqueValues");
        return {};
    }
}

}  // namespace wxl::utilities
