#include "adapters/gdal/text_lengths.h"
#include "adapters/ogr/ogr_class_state.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <memory>
#include <string>

namespace wxl::files {

using platform::FieldValue;
using platform::Geometry;
using platform::IFeature;
using platform::IFeatureCursor;
using platform::IInsertCursor;
using platform::Search;

namespace {

/// A row as it was when the cursor met it, under what was set through this object and what the class holds back.
class Row : public IFeature {
public:
    explicit Row(std::shared_ptr<Pass> pass) : m_pass(std::move(pass)) {}

    FieldValue Value(int field) const override {
        if (m_changes)
            if (const auto own = m_changes->Values.find(field); own != m_changes->Values.end()) return own->second;
        if (const FieldValue* held = m_pass->State().HeldBack(OID(), field)) return *held;
        if (field >= 0 && field < StoredCount()) return StoredValue(field);
        const bool addedSince = field >= 0 && static_cast<std::size_t>(field) < m_pass->State().Fields().size();
        if (!addedSince) platform::Raise(platform::error_number::kSubscript);
        return {};
    }

    void SetValue(int field, const FieldValue& value) override {
        if (!m_changes) m_changes = std::make_unique<Changes>();
        m_changes->Values[field] = m_pass->State().Checked(field, value);
        m_changes->NotStored[field] = m_changes->Values[field];
    }

    void Store() override {
        if (!m_changes) m_changes = std::make_unique<Changes>();
        m_pass->State().Store(OID(), m_changes->NotStored);
        m_changes->NotStored.clear();
    }

    void Delete() override { m_pass->State().Delete(OID()); }

    virtual bool HasShape() const = 0;

    /// Widens `bounds` by the shape.
    virtual void AddTo(platform::Extent& bounds) const = 0;

private:
    struct Changes {
        std::map<int, FieldValue> Values;  ///< set through this object, stored or not
        std::map<int, FieldValue> NotStored;
    };

    virtual int StoredCount() const = 0;
    virtual FieldValue StoredValue(int field) const = 0;

    std::shared_ptr<Pass> m_pass;
    std::unique_ptr<Changes> m_changes;
};

[[noreturn]] void raise_gone(const std::filesystem::path& path, const std::string& row) {
    platform::Raise(platform::error_number::kPermissionDenied,
                    path.string() + ": " + row +
                        " was chosen and is not there any more: another program changed the file. Start again");
}

class OgrRow final : public Row {
public:
    OgrRow(std::shared_ptr<Pass> pass, OGRFeatureUniquePtr feature)
        : Row(std::move(pass)), m_feature(std::move(feature)) {}

    std::int64_t OID() const override { return m_feature->GetFID(); }
    Geometry Shape() const override { return shape_of(m_feature->GetGeometryRef()); }

    bool HasShape() const override {
        const OGRGeometry* geometry = m_feature->GetGeometryRef();
        return geometry != nullptr && geometry->IsEmpty() == FALSE;
    }

    void AddTo(platform::Extent& bounds) const override {
        if (!HasShape()) return;
        OGREnvelope box;
        m_feature->GetGeometryRef()->getEnvelope(&box);
        for (const platform::Point& corner : {platform::Point{box.MinX, box.MinY}, platform::Point{box.MaxX, box.MaxY}})
            if (std::isfinite(corner.X) && std::isfinite(corner.Y)) bounds.Include(corner);
    }

private:
    int StoredCount() const override { return m_feature->GetFieldCount(); }
    FieldValue StoredValue(int field) const override { return value_of(*m_feature, field); }

    OGRFeatureUniquePtr m_feature;
};

/// One of the plain rows of a shapefile of points.
class PointRow final : public Row {
public:
    PointRow(std::shared_ptr<Pass> pass, std::shared_ptr<const PointRows> rows, std::size_t row)
        : Row(std::move(pass)), m_rows(std::move(rows)), m_row(row) {}

    std::int64_t OID() const override { return m_rows->First + static_cast<std::int64_t>(m_row); }
    Geometry Shape() const override { return Geometry::OfPoint(m_rows->Locations[m_row]); }
    bool HasShape() const override { return true; }
    void AddTo(platform::Extent& bounds) const override { bounds.Include(m_rows->Locations[m_row]); }

private:
    int StoredCount() const override { return m_rows->ColumnCount(); }
    FieldValue StoredValue(int field) const override { return m_rows->Cell(m_row, field); }

    std::shared_ptr<const PointRows> m_rows;
    std::size_t m_row;
};

/// Where a cursor's rows come from.
class IRows {
public:
    virtual ~IRows() = default;
    virtual std::unique_ptr<Row> Next() = 0;
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

class RowsInOrder final : public IRows {
public:
    RowsInOrder(const std::shared_ptr<Pass>& pass, const Search& wanted)
        : m_pass(pass), m_loan(pass->State(), wanted), m_reader(pass->State(), m_loan.Layer()) {}

    std::unique_ptr<Row> Next() override {
        OGRFeatureUniquePtr feature = m_reader.Next();
        return feature ? std::make_unique<OgrRow>(m_pass, std::move(feature)) : nullptr;
    }

private:
    std::shared_ptr<Pass> m_pass;
    Loan m_loan;
    RowReader m_reader;
};

/// A row by its number; null when there is none, RuntimeError 57 when it is there and cannot be read.
OGRFeatureUniquePtr row_at(OGRLayer& layer, std::int64_t oid, OgrFeatureClass::State& state) {
    const GdalErrors errors;
    OGRFeatureUniquePtr row(layer.GetFeature(oid));
    // Some formats call it a failure that there is no such row.
    const auto stands = [&] { return row || std::ranges::count(*state.Numbers(), oid) > 0; };
    if (row) CheckTexts(*row, state.Path());
    if (errors.Failed() && stands()) state.RaiseUnread("the row " + std::to_string(oid), errors);
    return row;
}

/// Rows of a shapefile of points; OGR reads those that are not plain.
class RowsOfPoints final : public IRows {
public:
    RowsOfPoints(const std::shared_ptr<Pass>& pass, const Search& wanted, std::unique_ptr<PointShapefile> points)
        : m_pass(pass), m_loan(pass->State(), wanted), m_points(std::move(points)) {}

    std::unique_ptr<Row> Next() override {
        while (m_rows || Fetch()) {
            for (; m_row < m_rows->Kinds.size(); ++m_row) {
                const PointRows::Kind kind = m_rows->Kinds[m_row];
                if (kind == PointRows::Kind::kPlain) return std::make_unique<PointRow>(m_pass, m_rows, m_row++);
                if (kind == PointRows::Kind::kOther) return OgrRowAt(m_row++);
            }
            m_rows.reset();
        }
        return nullptr;
    }

private:
    bool Fetch() {
        m_rows = m_points->Next();
        m_row = 0;
        return m_rows != nullptr;
    }

    std::unique_ptr<Row> OgrRowAt(std::size_t row) {
        const std::int64_t oid = m_rows->First + static_cast<std::int64_t>(row);
        OGRFeatureUniquePtr feature = row_at(m_loan.Layer(), oid, m_pass->State());
        if (!feature) raise_gone(m_pass->State().Path(), "the row " + std::to_string(oid));
        return std::make_unique<OgrRow>(m_pass, std::move(feature));
    }

    std::shared_ptr<Pass> m_pass;
    Loan m_loan;
    std::unique_ptr<PointShapefile> m_points;
    std::shared_ptr<const PointRows> m_rows;
    std::size_t m_row = 0;
};

/// Fetches rows in groups of neighbouring object IDs, and leaves no statement open between them. The order in which a
/// database gives the rows of a group does not matter: it may be that of an index.
class RowsInGroups final : public IRows {
public:
    RowsInGroups(const std::shared_ptr<Pass>& pass, const Search& wanted)
        : m_pass(pass), m_loan(pass->State(), wanted), m_numbers(pass->State().Numbers()) {}

    std::unique_ptr<Row> Next() override {
        while (m_group.empty())
            if (!Fetch()) return nullptr;
        auto next = std::make_unique<OgrRow>(m_pass, std::move(m_group.front()));
        m_group.pop_front();
        return next;
    }

private:
    /// False at the end; a group may be empty when its rows are gone.
    bool Fetch() {
        constexpr std::size_t kGroup = 1000;
        if (m_next == m_numbers->size()) return false;
        const std::size_t end = std::min(m_numbers->size(), m_next + kGroup);
        OGRLayer& layer = m_loan.Layer();
        const std::string column = "\"" + std::string(layer.GetFIDColumn()) + "\"";
        const std::string range = column + " >= " + std::to_string((*m_numbers)[m_next]) + " AND " + column +
                                  " <= " + std::to_string((*m_numbers)[end - 1]);
        layer.SetAttributeFilter(range.c_str());
        RowReader rows(m_pass->State(), layer);
        while (OGRFeatureUniquePtr feature = rows.Next()) m_group.push_back(std::move(feature));
        layer.ResetReading();
        std::sort(m_group.begin(), m_group.end(),
                  [](const OGRFeatureUniquePtr& a, const OGRFeatureUniquePtr& b) { return a->GetFID() < b->GetFID(); });
        m_next = end;
        return true;
    }

    std::shared_ptr<Pass> m_pass;
    Loan m_loan;
    std::shared_ptr<const std::vector<std::int64_t>> m_numbers;
    std::deque<OGRFeatureUniquePtr> m_group;
    std::size_t m_next = 0;
};

/// Rows by their numbers. Those that were chosen must be there; one that is asked for need not.
class RowsOfOIDs final : public IRows {
public:
    enum class MustStand { kNo, kYes };

    RowsOfOIDs(const std::shared_ptr<Pass>& pass, const Search& wanted, std::vector<std::int64_t> oids, MustStand must)
        : m_pass(pass), m_loan(pass->State(), wanted), m_oids(std::move(oids)), m_must(must) {}

    std::unique_ptr<Row> Next() override {
        while (m_next < m_oids.size()) {
            const std::int64_t oid = m_oids[m_next++];
            if (m_pass->State().IsDeleted(oid)) continue;
            if (OGRFeatureUniquePtr feature = row_at(m_loan.Layer(), oid, m_pass->State()))
                return std::make_unique<OgrRow>(m_pass, std::move(feature));
            if (m_must == MustStand::kYes) raise_gone(m_pass->State().Path(), "the row " + std::to_string(oid));
        }
        return nullptr;
    }

private:
    std::shared_ptr<Pass> m_pass;
    Loan m_loan;
    std::vector<std::int64_t> m_oids;
    MustStand m_must;
    std::size_t m_next = 0;
};

/// Some of the rows that another source gives, by their places in it.
class RowsAtPlaces final : public IRows {
public:
    RowsAtPlaces(std::unique_ptr<IRows> all, std::vector<std::int64_t> places, std::filesystem::path path)
        : m_all(std::move(all)), m_places(std::move(places)), m_path(std::move(path)) {}

    std::unique_ptr<Row> Next() override {
        if (m_next == m_places.size()) return nullptr;
        while (std::unique_ptr<Row> row = m_all->Next())
            if (m_place++ == m_places[m_next]) {
                ++m_next;
                return row;
            }
        raise_gone(m_path, "a row");
    }

private:
    std::unique_ptr<IRows> m_all;
    std::vector<std::int64_t> m_places;
    std::filesystem::path m_path;
    std::size_t m_next = 0;
    std::int64_t m_place = 0;
};

class OgrCursor final : public IFeatureCursor {
public:
    OgrCursor(std::shared_ptr<Pass> pass, const Search& search, std::unique_ptr<IRows> rows)
        : m_pass(std::move(pass)), m_rows(std::move(rows)), m_where(search.Where), m_withShape(search.WithShape) {
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
        while (std::unique_ptr<Row> row = m_rows->Next()) {
            if (m_pass->State().IsDeleted(row->OID())) continue;
            if (m_where && !platform::ValueEquals(WhereValue(*row), m_where->Value)) continue;
            if (m_withShape && !row->HasShape()) m_pass->State().CheckHasNoShape(row->OID());
            return row;
        }
        return nullptr;
    }

    void Flush() override { m_pass->State().Commit(); }

private:
    FieldValue WhereValue(const Row& row) const {
        return m_whereField < 0 ? FieldValue(row.OID()) : row.Value(m_whereField);
    }

    std::shared_ptr<Pass> m_pass;
    std::unique_ptr<IRows> m_rows;
    std::optional<platform::AttributeQuery> m_where;
    bool m_withShape;
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

/// The row that a query by object ID asks for, when it asks for one and there is one at most.
std::optional<std::vector<std::int64_t>> oid_asked_for(OgrFeatureClass::State& state, const Search& search) {
    if (!search.Where || !platform::EqualNoCase(search.Where->Field, "FID")) return std::nullopt;
    const auto* oid = std::get_if<std::int64_t>(&search.Where->Value);
    if (oid == nullptr || state.Order() == RowOrder::kRepeating) return std::nullopt;
    return std::vector{*oid};
}

std::unique_ptr<IRows> rows_of(const std::shared_ptr<Pass>& pass, const Search& search) {
    if (pass->State().ReadsInGroups()) return std::make_unique<RowsInGroups>(pass, search);
    if (auto points = pass->State().Points(search))
        return std::make_unique<RowsOfPoints>(pass, search, std::move(points));
    return std::make_unique<RowsInOrder>(pass, search);
}

}  // namespace

OGRFeatureUniquePtr RowReader::Next() {
    const GdalErrors errors;
    OGRFeatureUniquePtr row(m_layer.GetNextFeature());
    if (row) m_last = row->GetFID();
    if (row) CheckTexts(*row, m_state.Path());
    if (!errors.Failed()) return row;
    const std::string last = m_last ? "the row " + std::to_string(*m_last) : "";
    m_state.RaiseUnread(row ? last : last.empty() ? "the first row" : "the row after " + last, errors);
}

platform::Extent bounds_of(const std::shared_ptr<Pass>& pass) {
    platform::Extent bounds;
    const auto rows = rows_of(pass, {.Fields = kNoCells});
    while (const std::unique_ptr<Row> row = rows->Next()) {
        if (pass->State().IsDeleted(row->OID())) continue;
        if (!row->HasShape()) pass->State().CheckHasNoShape(row->OID());
        row->AddTo(bounds);
    }
    return bounds;
}

std::unique_ptr<IFeatureCursor> open_cursor(std::shared_ptr<Pass> pass, const Search& search) {
    std::unique_ptr<IRows> rows;
    if (auto oid = oid_asked_for(pass->State(), search))
        rows = std::make_unique<RowsOfOIDs>(pass, search, *std::move(oid), RowsOfOIDs::MustStand::kNo);
    else
        rows = rows_of(pass, search);
    return std::make_unique<OgrCursor>(std::move(pass), search, std::move(rows));
}

std::unique_ptr<IFeatureCursor> open_cursor(std::shared_ptr<Pass> pass, const Search& search,
                                            const ChosenRows& chosen) {
    std::unique_ptr<IRows> rows;
    if (chosen.ArePlaces)
        rows = std::make_unique<RowsAtPlaces>(rows_of(pass, search), chosen.Rows, pass->State().Path());
    else
        rows = std::make_unique<RowsOfOIDs>(pass, search, chosen.Rows, RowsOfOIDs::MustStand::kYes);
    return std::make_unique<OgrCursor>(std::move(pass), search, std::move(rows));
}

std::unique_ptr<IInsertCursor> open_insert_cursor(std::shared_ptr<Pass> pass) {
    pass->State().CheckInsert();
    return std::make_unique<OgrInsertCursor>(std::move(pass));
}

}  // namespace wxl::files
