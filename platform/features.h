#pragma once
// Tables, features and selections, as the tools use them. A fault of the host or the disk is thrown as RuntimeError
// with the name of the dataset in its description.

#include "platform/values.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace wxl::platform {

/// An attribute query of one field against one value. `Text` is how it reads ("ID = 'x'"); stores go by the typed
/// value, so that a quote in it does no harm. The field "FID" stands for the object ID.
struct AttributeQuery {
    std::string Text;
    std::string Field;
    FieldValue Value;
};

/// Which rows a cursor returns, and what of them. Rows come in the store's own order: ascending object ID
/// but for stores that take row numbers from the data.
struct Search {
    std::optional<AttributeQuery> Where = {};
    bool WithShape = true;                 ///< false: Shape() may be null, the scan is faster
    std::vector<std::string> Fields = {};  ///< not empty: cells of other fields may be missing, the scan is faster
};

/// One row met by a cursor. It stays usable after the cursor has moved on.
class IFeature {
public:
    virtual ~IFeature() = default;
    virtual std::int64_t OID() const = 0;
    virtual Geometry Shape() const = 0;

    /// The cell of the column `field` (index as ITable::FindField gives it); RuntimeError 9 outside the table.
    virtual FieldValue Value(int field) const = 0;
    virtual void SetValue(int field, const FieldValue& value) = 0;

    /// Keeps the values set so far. Stores may hold rows back and write them in bulk at IFeatureCursor::Flush.
    virtual void Store() = 0;

    /// Deletes the row from the table. Object IDs of other rows stay as they are until the cursors are gone.
    virtual void Delete() = 0;
};

/// A walk over rows. Destroying it flushes; call Flush to learn of errors.
class IFeatureCursor {
public:
    virtual ~IFeatureCursor() = default;

    /// The next row, or null at the end.
    virtual std::unique_ptr<IFeature> NextFeature() = 0;

    /// Writes held-back rows; RuntimeError when that fails.
    virtual void Flush() = 0;
};

/// Columns of a feature class.
class ITable {
public:
    virtual ~ITable() = default;
    virtual std::vector<Field> Fields() const = 0;

    /// Index of a field, found without regard to case, or -1.
    virtual int FindField(std::string_view name) const = 0;

    /// Adds a field and returns its index; RuntimeError when it cannot be added.
    virtual int AddField(const Field& field) = 0;
    virtual void DeleteField(int field) = 0;
};

/// Appends features to a class.
class IInsertCursor {
public:
    virtual ~IInsertCursor() = default;

    /// `values` in the order of the fields; missing values at the end may be left out.
    virtual void Insert(const Geometry& shape, std::span<const FieldValue> values) = 0;
    virtual void Flush() = 0;
};

/// A set of features of one shape type with their table.
class IFeatureClass {
public:
    virtual ~IFeatureClass() = default;
    virtual ShapeType Shape() const = 0;
    virtual SpatialReference Reference() const = 0;

    /// Extent of all features.
    virtual Extent Bounds() const = 0;
    virtual std::int64_t FeatureCount() const = 0;
    virtual ITable& Table() = 0;
    virtual std::unique_ptr<IFeatureCursor> Find(const Search& search) = 0;
    virtual std::unique_ptr<IInsertCursor> Insert() = 0;
};

/// The selected features of a layer.
class ISelectionSet {
public:
    virtual ~ISelectionSet() = default;
    virtual std::int64_t Count() const = 0;

    /// As IFeatureClass::Find, over the selected features only, in the same order.
    virtual std::unique_ptr<IFeatureCursor> Find(const Search& search) = 0;
};

}  // namespace wxl::platform
