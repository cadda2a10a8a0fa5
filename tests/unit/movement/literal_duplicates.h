#pragma once
// Duplicate removal as plain nested walks over the selection: slow, and obviously what is asked for.

#include "adapters/memory/memory_map.h"
#include "platform/checked.h"
#include "platform/runtime_error.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <string>
#include <vector>

namespace wxl::tests {

/// A cursor over given rows of a table in a given order, rows deleted meanwhile included.
class RowsInOrder final : public platform::IFeatureCursor {
public:
    RowsInOrder(memory::MemoryFeatureClass& table, const std::vector<std::int64_t>& order) {
        for (const std::int64_t oid : order) m_rows.push_back(table.FindAmong({oid}, {})->NextFeature());
    }
    std::unique_ptr<platform::IFeature> NextFeature() override {
        return m_next < m_rows.size() ? std::move(m_rows[m_next++]) : nullptr;
    }
    void Flush() override {}

private:
    std::vector<std::unique_ptr<platform::IFeature>> m_rows;
    std::size_t m_next = 0;
};

/// What a removal did: object IDs in the order of their deletion, and the text of the last box.
struct Removal {
    std::vector<std::int64_t> Deleted;
    std::string Text;
    friend bool operator==(const Removal&, const Removal&) = default;
};

/// Whether the second fix is a duplicate of the first, whose object ID is read in 16 bits.
using IsDuplicate = std::function<bool(std::int16_t, const platform::IFeature&, const platform::IFeature&)>;

inline Removal literal_removal(memory::MemoryFeatureLayer& layer, const std::vector<std::int64_t>& order,
                               const std::string& label, const std::function<void(const platform::IFeature&)>& read,
                               const IsDuplicate& isDuplicate) {
    Removal removal;
    try {
        RowsInOrder outerRows(layer.Features(), order);
        std::int16_t count = 0;
        while (const auto outer = outerRows.NextFeature()) {
            if (!layer.Features().HasRow(outer->OID())) continue;
            count = platform::to_i16(std::int64_t{count} + 1);
            const std::int16_t fid = platform::to_i16(outer->OID());
            read(*outer);
            const auto innerRows = layer.Selection()->Find({});
            while (const auto inner = innerRows->NextFeature()) {
                if (!isDuplicate(fid, *outer, *inner)) continue;
                inner->Delete();
                removal.Deleted.push_back(inner->OID());
            }
        }
        removal.Text = "Deleted " + std::to_string(removal.Deleted.size()) + " duplicate features";
    } catch (const platform::RuntimeError& error) {
        removal.Text = label + std::to_string(error.Number);
    }
    return removal;
}

/// By the time in column 0.
inline Removal literal_time2_removal(memory::MemoryFeatureLayer& layer, const std::vector<std::int64_t>& order) {
    const auto time = [](const platform::IFeature& fix) {
        return platform::round_half_even_i32(platform::ValueNumber(fix.Value(0)));
    };
    return literal_removal(
        layer, order, "CalcFeatures sub Error number: ", [&](const platform::IFeature& outer) { time(outer); },
        [&](std::int16_t fid, const platform::IFeature& outer, const platform::IFeature& inner) {
            const bool equal = time(inner) == time(outer);  // read whatever the object IDs are
            return inner.OID() > fid && equal;
        });
}

/// By location, `tolerance` in map units.
inline Removal literal_xy_removal(memory::MemoryFeatureLayer& layer, const std::vector<std::int64_t>& order,
                                  double tolerance) {
    return literal_removal(
        layer, order, "Calcfeatures sub Error number: ", [](const platform::IFeature&) {},
        [&](std::int16_t fid, const platform::IFeature& outer, const platform::IFeature& inner) {
            if (inner.OID() == fid || outer.Shape().IsNull() || inner.Shape().IsNull()) return false;
            const platform::Point a = outer.Shape().Location;
            const platform::Point b = inner.Shape().Location;
            return std::hypot(a.X - b.X, a.Y - b.Y) <= tolerance;
        });
}

}  // namespace wxl::tests
