#include "adapters/memory/memory_feature_class.h"

#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>

namespace wxl::memory {

using namespace wxl::platform;

namespace {

std::size_t checked_column(const MemoryTable& table, int field) {
    if (field < 0 || static_cast<std::size_t>(field) >= table.Fields.size()) Raise(error_number::kSubscript);
    return static_cast<std::size_t>(field);
}

MemoryRow& standing_row(MemoryTable& table, std::int64_t oid) {
    const auto found = table.Rows.find(oid);
    if (found == table.Rows.end() || found->second.Deleted)
        Raise(error_number::kInvalidCall, "There is no feature with the object ID " + std::to_string(oid) + ".");
    return found->second;
}

std::int64_t add_row(MemoryTable& table, const Geometry& shape, std::span<const FieldValue> values) {
    if (!shape.IsNull() && shape.Type != table.Shape)
        Raise(error_number::kInvalidCall, "The shape does not suit the feature class.");
    if (values.size() > table.Fields.size()) Raise(error_number::kSubscript);
    MemoryRow row{shape, std::vector<FieldValue>(table.Fields.size()), false};
    for (std::size_t i = 0; i < values.size(); ++i) row.Values[i] = ValueForColumn(values[i], table.Fields[i].Type);
    const std::int64_t oid = table.NextOID++;
    table.Rows.emplace(oid, std::move(row));
    return oid;
}

class MemoryFeature final : public IFeature {
public:
    MemoryFeature(std::shared_ptr<MemoryTable> table, std::int64_t oid, const MemoryRow& row, bool withShape)
        : m_table(std::move(table)), m_oid(oid), m_shape(withShape ? row.Shape : Geometry()), m_values(row.Values) {}

    std::int64_t OID() const override { return m_oid; }
    Geometry Shape() const override { return m_shape; }

    FieldValue Value(int field) const override {
        const std::size_t column = checked_column(*m_table, field);
        return column < m_values.size() ? m_values[column] : FieldValue();
    }

    void SetValue(int field, const FieldValue& value) override {
        const std::size_t column = checked_column(*m_table, field);
        FieldValue held = ValueForColumn(value, m_table->Fields[column].Type);
        if (m_values.size() <= column) m_values.resize(m_table->Fields.size());
        m_values[column] = std::move(held);
        m_changed.insert(column);
    }

    void Store() override {
        if (m_table->BeforeStore) m_table->BeforeStore(m_oid);
        MemoryRow& row = standing_row(*m_table, m_oid);
        for (const std::size_t column : m_changed) row.Values[column] = m_values[column];
        m_changed.clear();
    }

    void Delete() override {
        if (m_table->BeforeDelete) m_table->BeforeDelete(m_oid);
        standing_row(*m_table, m_oid).Deleted = true;
    }

private:
    std::shared_ptr<MemoryTable> m_table;
    std::int64_t m_oid;
    Geometry m_shape;
    std::vector<FieldValue> m_values;
    std::set<std::size_t> m_changed;
};

bool is_wanted(const MemoryTable& table, std::int64_t oid, const MemoryRow& row, const AttributeQuery& query) {
    if (EqualNoCase(query.Field, "FID")) return ValueEquals(oid, query.Value);
    const int field = find_field(table.Fields, query.Field);
    if (field < 0) Raise(error_number::kInvalidCall, "There is no field \"" + query.Field + "\".");
    return ValueEquals(row.Values[static_cast<std::size_t>(field)], query.Value);
}

class MemoryCursor final : public IFeatureCursor {
public:
    MemoryCursor(std::shared_ptr<MemoryTable> table, std::vector<std::int64_t> oids, bool withShape)
        : m_table(std::move(table)), m_oids(std::move(oids)), m_withShape(withShape) {}

    std::unique_ptr<IFeature> NextFeature() override {
        while (m_next < m_oids.size()) {
            const std::int64_t oid = m_oids[m_next++];
            const MemoryRow& row = m_table->Rows.at(oid);
            if (row.Deleted && !m_table->CursorsMeetDeletedRows) continue;
            return std::make_unique<MemoryFeature>(m_table, oid, row, m_withShape);
        }
        return nullptr;
    }

    void Flush() override { ++m_table->Flushes; }

private:
    std::shared_ptr<MemoryTable> m_table;
    std::vector<std::int64_t> m_oids;
    std::size_t m_next = 0;
    bool m_withShape;
};

class MemoryInsertCursor final : public IInsertCursor {
public:
    explicit MemoryInsertCursor(std::shared_ptr<MemoryTable> table) : m_table(std::move(table)) {}
    void Insert(const Geometry& shape, std::span<const FieldValue> values) override {
        add_row(*m_table, shape, values);
    }
    void Flush() override { ++m_table->Flushes; }

private:
    std::shared_ptr<MemoryTable> m_table;
};

std::unique_ptr<IFeatureCursor> open_cursor(const std::shared_ptr<MemoryTable>& table, const Search& search,
                                            const std::set<std::int64_t>* among) {
    if (table->BeforeFind) table->BeforeFind();
    ++table->Finds;
    std::vector<std::int64_t> oids;
    for (const auto& [oid, row] : table->Rows) {
        if (row.Deleted || (among && !among->contains(oid))) continue;
        if (!search.Where || is_wanted(*table, oid, row, *search.Where)) oids.push_back(oid);
    }
    return std::make_unique<MemoryCursor>(table, std::move(oids), search.WithShape);
}

}  // namespace

int find_field(std::span<const Field> fields, std::string_view name) {
    const auto found =
        std::find_if(fields.begin(), fields.end(), [&](const Field& f) { return EqualNoCase(f.Name, name); });
    return found == fields.end() ? -1 : static_cast<int>(found - fields.begin());
}

MemoryFeatureClass::MemoryFeatureClass(ShapeType shape, std::vector<Field> fields, SpatialReference reference,
                                       std::int64_t firstOID)
    : m_table(std::make_shared<MemoryTable>()) {
    m_table->Shape = shape;
    m_table->Fields = std::move(fields);
    m_table->Reference = std::move(reference);
    m_table->NextOID = firstOID;
}

Extent MemoryFeatureClass::Bounds() const {
    Extent bounds;
    for (const auto& [oid, row] : m_table->Rows) {
        if (row.Deleted || row.Shape.IsNull()) continue;
        if (row.Shape.Type == ShapeType::kPoint) bounds.Include(row.Shape.Location);
        for (const auto& part : row.Shape.Parts)
            for (const Point& vertex : part) bounds.Include(vertex);
    }
    return bounds;
}

std::int64_t MemoryFeatureClass::FeatureCount() const {
    return std::count_if(m_table->Rows.begin(), m_table->Rows.end(), [](const auto& r) { return !r.second.Deleted; });
}

std::unique_ptr<IFeatureCursor> MemoryFeatureClass::Find(const Search& search) {
    return open_cursor(m_table, search, nullptr);
}

std::unique_ptr<IFeatureCursor> MemoryFeatureClass::FindAmong(const std::set<std::int64_t>& oids,
                                                              const Search& search) {
    return open_cursor(m_table, search, &oids);
}

std::unique_ptr<IInsertCursor> MemoryFeatureClass::Insert() {
    return std::make_unique<MemoryInsertCursor>(m_table);
}

std::int64_t MemoryFeatureClass::Add(const Geometry& shape, std::span<const FieldValue> values) {
    return add_row(*m_table, shape, values);
}

std::int64_t MemoryFeatureClass::Add(const Geometry& shape, std::initializer_list<FieldValue> values) {
    return add_row(*m_table, shape, std::span(values.begin(), values.size()));
}

std::int64_t MemoryFeatureClass::AddPoint(double x, double y, std::initializer_list<FieldValue> values) {
    return Add(Geometry::OfPoint({x, y}), values);
}

void MemoryFeatureClass::SetNextOID(std::int64_t oid) {
    if (!m_table->Rows.empty() && oid <= m_table->Rows.rbegin()->first) Raise(error_number::kInvalidCall);
    m_table->NextOID = oid;
}

FieldValue MemoryFeatureClass::ValueOf(std::int64_t oid, std::string_view field) const {
    return standing_row(*m_table, oid).Values[checked_column(*m_table, FindField(field))];
}

bool MemoryFeatureClass::HasRow(std::int64_t oid) const {
    const auto found = m_table->Rows.find(oid);
    return found != m_table->Rows.end() && !found->second.Deleted;
}

std::vector<std::int64_t> MemoryFeatureClass::OIDs() const {
    std::vector<std::int64_t> oids;
    for (const auto& [oid, row] : m_table->Rows)
        if (!row.Deleted) oids.push_back(oid);
    return oids;
}

int MemoryFeatureClass::FindField(std::string_view name) const {
    return find_field(m_table->Fields, name);
}

int MemoryFeatureClass::AddField(const Field& field) {
    if (field.Name.empty() || FindField(field.Name) >= 0)
        Raise(error_number::kInvalidCall, "The field name \"" + field.Name + "\" is empty or taken.");
    m_table->Fields.push_back(field);
    for (auto& [oid, row] : m_table->Rows) row.Values.resize(m_table->Fields.size());
    return static_cast<int>(m_table->Fields.size()) - 1;
}

void MemoryFeatureClass::DeleteField(int field) {
    const auto column = static_cast<std::ptrdiff_t>(checked_column(*m_table, field));
    m_table->Fields.erase(m_table->Fields.begin() + column);
    for (auto& [oid, row] : m_table->Rows) row.Values.erase(row.Values.begin() + column);
}

}  // namespace wxl::memory
