#pragma once
#include "adapters/tracking/layer_writer.h"
#include "apps/cli/fix_import.h"

namespace wxl::cli {

/// The table of imported fixes as a layer holds it: animal, (individual, subset,) Time2, Date, Time1, then the other
/// columns.
class FixRows {
public:
    enum class Columns {
        kAll,
        kErrors,  ///< of the other columns those that tell the errors of positions
        kOwn      ///< none of the other columns
    };

    FixRows(ImportedFixes& fixes, tracking::LayerFormat format, Columns columns = Columns::kAll);

    const std::vector<platform::Field>& Fields() const { return m_fields; }

    /// Other columns whose names had to change: "old" became "new".
    std::vector<std::string> Renamed() const;

    /// Texts that are cut, because the format holds 254 bytes at most; known when all rows are put.
    std::int64_t Cut() const { return m_cut; }

    void PutAll(tracking::ILayerWriter& writer);

private:
    void AddOwnFields();
    void AddOtherFields(Columns columns);
    platform::Field FieldOf(const tracking::OtherColumn& column) const;
    void SetOwnValues(std::size_t i);
    void SetOtherValues(const tracking::TrackingFix& fix);

    ImportedFixes& m_fixes;
    tracking::LayerFormat m_format;
    bool m_hasTimes;
    bool m_hasOthers = false;
    std::vector<platform::Field> m_fields;
    std::vector<std::string> m_wantedNames;
    std::size_t m_own = 0;
    std::vector<std::size_t> m_taken;  ///< places of the other columns that are taken
    std::vector<platform::FieldValue> m_values;
    std::vector<platform::FieldValue> m_others;
    std::int64_t m_cut = 0;
};

}  // namespace wxl::cli
