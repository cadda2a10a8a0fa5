#include "adapters/files/ogr_class_state.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <deque>
#include <limits>

namespace wxl::files {

using platform::FieldValue;
using platform::Geometry;
using platform::IFeature;
using platform::IFeatureCursor;
using platform::IInsertCursor;
using platform::Search;

namespace {

class OgrRow final : public IFeature {
public:
    OgrRow(std::shared_ptr<Pass> pass, OGRFeatureUniquePtr feature)
        : m_pass(std::move(pass)), m_feature(std::move(feature)) {}

    std::int64_t OID() const override { return m_feature->GetFID(); }
    Geometry Shape() const override { return shape_of(m_feature->GetGeometryRef()); }

    FieldValue Value(int field) const override {
        if (const auto own = m_values.find(field); own != m_values.end()) return own->second;
        if (const FieldValue* held = m_pass->State().HeldBack(OID(), field)) return *held;
        if (field >= 0 && field < m_feature->GetFieldCount()) return value_of(*m_feature, field);
        const bool addedSince = field >= 0 && static_cast<std::size_t>(field) < m_pass->State().Fields().size();
        if (!addedSince) platform::Raise(platform::error_number::kSubscript);
        return {};
    }

    void SetValue(int field, const FieldValue& value) override {
        m_values[field] = m_pass->State().Checked(field, value);
        m_changed[field] = m_values[field];
    }

    void Store() override {
        m_pass->State().Store(OID(), m_changed);
        m_changed.clear();
    }

    void Delete() override { m_pass->State().Delete(OID()); }

private:
    std::shared_ptr<Pass> m_pass;
    OGRFeatureUniquePtr m_feature;
    std::map<int, FieldValue> m_values;   // set through this object, stored or not
    std::map<int, FieldValue> m_changed;  // of these, not stored yet
};

/// Where a cursor's rows come from.
class IRows {
public:
    virtual ~IRows() = default;
    virtual OGRFeatureUniquePtr Next() = 0;
};

/// An open layer of the class, given back at the end.
class Loan {
public:
    Loan(OgrFeatureClass::State& state, const Search& wanted) : m_state(state), m_source(state.Borrow(wanted)) {}
    ~Loan() { m_state.GiveBack(std::move(m_source)); }
    Loan(const Loan&) = delete;
    Loan& operator=(const Loan&) = delete;
    OGRLayer& Layer() { return m_source->Layer(); }

private:
    OgrFeatureClass::State& m_state;
    std::unique_ptr<OgrSource> m_source;
};

/// The next row; RuntimeError when it is there and cannot be read.
OGRFeatureUniquePtr next_row(OGRLayer& layer, const std::filesystem::path& path) {
    const GdalErrors errors;
    OGRFeatureUniquePtr row(layer.GetNextFeature());
    if (errors.Failed()) errors.RaiseReading(path);
    return row;
}

class RowsInOrder final : public IRows {
public:
    RowsInOrder(OgrFeatureClass::State& state, const Search& wanted) : m_loan(state, wanted), m_path(state.Path()) {}
    OGRFeatureUniquePtr Next() override { return next_row(m_loan.Layer(), m_path); }

private:
    Loan m_loan;
    std::filesystem::path m_path;
};

/// Fetches rows in groups and leaves no statement open between them.
class RowsInGroups final : public IRows {
public:
    RowsInGroups(OgrFeatureClass::State& state, const Search& wanted) : m_loan(state, wanted), m_path(state.Path()) {}

    OGRFeatureUniquePtr Next() override {
        if (m_group.empty()) Fetch();
        if (m_group.empty()) return nullptr;
        OGRFeatureUniquePtr next = std::move(m_group.front());
        m_group.pop_front();
        return next;
    }

private:
    void Fetch() {
        constexpr std::size_t kGroup = 1000;
        OGRLayer& layer = m_loan.Layer();
        if (m_last) {
            const std::string above = "\"" + std::string(layer.GetFIDColumn()) + "\" > " + std::to_string(*m_last);
            layer.SetAttributeFilter(above.c_str());
        }
        layer.ResetReading();
        while (m_group.size() < kGroup) {
            OGRFeatureUniquePtr feature = next_row(layer, m_path);
            if (!feature) break;
            m_last = feature->GetFID();
            m_group.push_back(std::move(feature));
        }
        layer.ResetReading();
    }

    Loan m_loan;
    std::filesystem::path m_path;
    std::deque<OGRFeatureUniquePtr> m_group;
    std::optional<GIntBig> m_last;
};

class RowsOfOIDs final : public IRows {
public:
    RowsOfOIDs(OgrFeatureClass::State& state, const Search& wanted, std::vector<std::int64_t> oids)
        : m_loan(state, wanted), m_oids(std::move(oids)) {}

    OGRFeatureUniquePtr Next() override {
        while (m_next < m_oids.size()) {
            const GdalErrors notThere;
            if (OGRFeatureUniquePtr feature{m_loan.Layer().GetFeature(m_oids[m_next++])}) return feature;
        }
        return nullptr;
    }

private:
    Loan m_loan;
    std::vector<std::int64_t> m_oids;
    std::size_t m_next = 0;
};

class OgrCursor final : public IFeatureCursor {
public:
    OgrCursor(std::shared_ptr<Pass> pass, const Search& search, std::unique_ptr<IRows> rows)
        : m_pass(std::move(pass)), m_rows(std::move(rows)), m_where(search.Where) {
        if (!m_where || platform::EqualNoCase(m_where->Field, "FID")) return;
        m_whereField = m_pass->State().FindField(m_where->Field);
        if (m_whereField < 0)
            platform::Raise(platform::error_number::kInvalidCall, "There is no field \"" + m_where->Field + "\".");
    }

    ~OgrCursor() override {
        m_rows.reset();
        try {
            m_pass->State().Commit();
        } catch (const platform::RuntimeError&) {
            // Whoever wants to know calls Flush.
        }
    }

    std::unique_ptr<IFeature> NextFeature() override {
        while (OGRFeatureUniquePtr feature = m_rows->Next()) {
            if (m_pass->State().IsDeleted(feature->GetFID())) continue;
            auto row = std::make_unique<OgrRow>(m_pass, std::move(feature));
            if (!m_where || platform::ValueEquals(WhereValue(*row), m_where->Value)) return row;
        }
        return nullptr;
    }

    void Flush() override { m_pass->State().Commit(); }

private:
    FieldValue WhereValue(const OgrRow& row) const {
        return m_whereField < 0 ? FieldValue(row.OID()) : row.Value(m_whereField);
    }

    std::shared_ptr<Pass> m_pass;
    std::unique_ptr<IRows> m_rows;
    std::optional<platform::AttributeQuery> m_where;
    int m_whereField = -1;
};

class OgrInsertCursor final : public IInsertCursor {
public:
    explicit OgrInsertCursor(std::shared_ptr<Pass> pass) : m_pass(std::move(pass)) {}
    ~OgrInsertCursor() override {
        try {
            m_pass->State().Commit();
        } catch (const platform::RuntimeError&) {
            // Whoever wants to know calls Flush.
        }
    }
    void Insert(const Geometry& shape, std::span<const FieldValue> values) override {
        m_pass->State().Insert(shape, values);
    }
    void Flush() override { m_pass->State().Commit(); }

private:
    std::shared_ptr<Pass> m_pass;
};

/// The object ID that a query asks for, when it asks for one.
std::optional<std::vector<std::int64_t>> oid_asked_for(const Search& search) {
    if (!search.Where || !platform::EqualNoCase(search.Where->Field, "FID")) return std::nullopt;
    if (const auto* oid = std::get_if<std::int64_t>(&search.Where->Value)) return std::vector{*oid};
    return std::nullopt;
}

}  // namespace

std::unique_ptr<IFeatureCursor> open_cursor(std::shared_ptr<Pass> pass, const Search& search) {
    if (auto oid = oid_asked_for(search)) return open_cursor(std::move(pass), search, *std::move(oid));
    std::unique_ptr<IRows> rows;
    if (pass->State().ReadsInGroups())
        rows = std::make_unique<RowsInGroups>(pass->State(), search);
    else
        rows = std::make_unique<RowsInOrder>(pass->State(), search);
    return std::make_unique<OgrCursor>(std::move(pass), search, std::move(rows));
}

std::unique_ptr<IFeatureCursor> open_cursor(std::shared_ptr<Pass> pass, const Search& search,
                                            std::vector<std::int64_t> oids) {
    auto rows = std::make_unique<RowsOfOIDs>(pass->State(), search, std::move(oids));
    return std::make_unique<OgrCursor>(std::move(pass), search, std::move(rows));
}

std::unique_ptr<IInsertCursor> open_insert_cursor(std::shared_ptr<Pass> pass) {
    pass->State().CheckInsert();
    return std::make_unique<OgrInsertCursor>(std::move(pass));
}

}  // namespace wxl::files
