#include "adapters/shapefile/row_buffer.h"

#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <map>
#include <optional>
#include <utility>

namespace wxl::files {

using platform::Field;
using platform::FieldValue;
using platform::Geometry;
using platform::Raise;
namespace error_number = platform::error_number;

namespace {

struct BufferedRow {
    Geometry Shape;
    std::vector<FieldValue> Values;
    bool Deleted = false;
};

}  // namespace

struct RowBuffer::Rows {
    std::vector<Field> Fields;
    std::vector<BufferedRow> All;  ///< by object ID

    /// -1: there is none.
    int FindField(std::string_view name) const {
        const auto found = std::find_if(Fields.begin(), Fields.end(),
                                        [&](const Field& f) { return platform::EqualNoCase(f.Name, name); });
        return found == Fields.end() ? -1 : static_cast<int>(found - Fields.begin());
    }

    std::size_t Column(int field) const {
        if (field < 0 || static_cast<std::size_t>(field) >= Fields.size()) Raise(error_number::kSubscript);
        return static_cast<std::size_t>(field);
    }

    BufferedRow& At(std::size_t row) {
        if (All[row].Deleted)
            Raise(error_number::kInvalidCall, "There is no feature with the object ID " + std::to_string(row) + ".");
        return All[row];
    }

    bool IsWanted(std::size_t row, const std::optional<platform::AttributeQuery>& query) const {
        if (All[row].Deleted) return false;
        if (!query) return true;
        if (platform::EqualNoCase(query->Field, "FID"))
            return platform::ValueEquals(static_cast<std::int64_t>(row), query->Value);
        const int field = FindField(query->Field);
        if (field < 0) Raise(error_number::kInvalidCall, "There is no field \"" + query->Field + "\".");
        return platform::ValueEquals(All[row].Values[static_cast<std::size_t>(field)], query->Value);
    }
};

namespace {

using Shared = std::shared_ptr<RowBuffer::Rows>;

class BufferedFeature final : public platform::IFeature {
public:
    BufferedFeature(Shared rows, std::size_t row) : m_rows(std::move(rows)), m_row(row), m_was(m_rows->All[row]) {}

    std::int64_t OID() const override { return static_cast<std::int64_t>(m_row); }
    Geometry Shape() const override { return m_was.Shape; }

    FieldValue Value(int field) const override {
        const std::size_t column = m_rows->Column(field);
        if (const auto changed = m_changed.find(column); changed != m_changed.end()) return changed->second;
        return column < m_was.Values.size() ? m_was.Values[column] : FieldValue();
    }

    void SetValue(int field, const FieldValue& value) override {
        const std::size_t column = m_rows->Column(field);
        m_changed[column] = platform::ValueForColumn(value, m_rows->Fields[column].Type);
    }

    void Store() override {
        BufferedRow& row = m_rows->At(m_row);
        for (const auto& [column, value] : m_changed) row.Values.at(column) = value;
    }

    void Delete() override { m_rows->At(m_row).Deleted = true; }

private:
    Shared m_rows;
    std::size_t m_row;
    BufferedRow m_was;
    std::map<std::size_t, FieldValue> m_changed;
};

/// Rows added after it was opened are not met.
class BufferCursor final : public platform::IFeatureCursor {
public:
    BufferCursor(Shared rows, std::optional<platform::AttributeQuery> query)
        : m_rows(std::move(rows)), m_query(std::move(query)), m_end(m_rows->All.size()) {}

    std::unique_ptr<platform::IFeature> NextFeature() override {
        while (m_next < m_end)
            if (const std::size_t row = m_next++; m_rows->IsWanted(row, m_query))
                return std::make_unique<BufferedFeature>(m_rows, row);
        return nullptr;
    }

    void Flush() override {}

private:
    Shared m_rows;
    std::optional<platform::AttributeQuery> m_query;
    std::size_t m_end;
    std::size_t m_next = 0;
};

class BufferInsertCursor final : public platform::IInsertCursor {
public:
    BufferInsertCursor(Shared rows, platform::ShapeType shape) : m_rows(std::move(rows)), m_shape(shape) {}

    void Insert(const Geometry& shape, std::span<const FieldValue> values) override {
        if (!shape.IsNull() && shape.Type != m_shape)
            Raise(error_number::kInvalidCall, "The shape does not suit the feature class.");
        if (values.size() > m_rows->Fields.size()) Raise(error_number::kSubscript);
        BufferedRow row{shape, std::vector<FieldValue>(m_rows->Fields.size())};
        for (std::size_t i = 0; i < values.size(); ++i)
            row.Values[i] = platform::ValueForColumn(values[i], m_rows->Fields[i].Type);
        m_rows->All.push_back(std::move(row));
    }

    void Flush() override {}

private:
    Shared m_rows;
    platform::ShapeType m_shape;
};

}  // namespace

RowBuffer::RowBuffer(platform::ShapeType shape, std::vector<Field> fields, platform::SpatialReference reference)
    : m_shape(shape), m_reference(std::move(reference)), m_rows(std::make_shared<Rows>()) {
    m_rows->Fields = std::move(fields);
}

platform::Extent RowBuffer::Bounds() const {
    platform::Extent bounds;
    for (const BufferedRow& row : m_rows->All) {
        if (row.Deleted || row.Shape.IsNull()) continue;
        if (row.Shape.Type == platform::ShapeType::kPoint) bounds.Include(row.Shape.Location);
        for (const auto& part : row.Shape.Parts)
            for (const platform::Point& vertex : part) bounds.Include(vertex);
    }
    return bounds;
}

std::int64_t RowBuffer::FeatureCount() const {
    return std::count_if(m_rows->All.begin(), m_rows->All.end(), [](const BufferedRow& row) { return !row.Deleted; });
}

std::unique_ptr<platform::IFeatureCursor> RowBuffer::Find(const platform::Search& search) {
    if (search.Where && !platform::EqualNoCase(search.Where->Field, "FID") && FindField(search.Where->Field) < 0)
        Raise(error_number::kInvalidCall, "There is no field \"" + search.Where->Field + "\".");
    return std::make_unique<BufferCursor>(m_rows, search.Where);
}

std::unique_ptr<platform::IInsertCursor> RowBuffer::Insert() {
    return std::make_unique<BufferInsertCursor>(m_rows, m_shape);
}

std::vector<Field> RowBuffer::Fields() const {
    return m_rows->Fields;
}

int RowBuffer::FindField(std::string_view name) const {
    return m_rows->FindField(name);
}

int RowBuffer::AddField(const Field& field) {
    if (field.Name.empty() || FindField(field.Name) >= 0)
        Raise(error_number::kInvalidCall, "The field name \"" + field.Name + "\" is empty or taken.");
    m_rows->Fields.push_back(field);
    for (BufferedRow& row : m_rows->All) row.Values.resize(m_rows->Fields.size());
    return static_cast<int>(m_rows->Fields.size()) - 1;
}

void RowBuffer::DeleteField(int field) {
    const auto column = static_cast<std::ptrdiff_t>(m_rows->Column(field));
    m_rows->Fields.erase(m_rows->Fields.begin() + column);
    for (BufferedRow& row : m_rows->All) row.Values.erase(row.Values.begin() + column);
}

}  // namespace wxl::files
