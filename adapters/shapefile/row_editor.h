#pragma once
#include "platform/features.h"

#include <map>
#include <set>
#include <unordered_map>

namespace wxl::files {

/// A row that is to be appended.
struct NewRow {
    platform::Geometry Shape;
    std::vector<platform::FieldValue> Values;
};

/// Changes of rows that are held back.
struct RowEdits {
    std::unordered_map<std::int64_t, std::map<int, platform::FieldValue>> Values;  ///< cells by object ID and field
    std::set<std::int64_t> Deleted;
    std::vector<NewRow> Inserted;

    bool IsEmpty() const { return Values.empty() && Deleted.empty() && Inserted.empty(); }
};

/// How rows of one file format are changed on disk. Each change is done as a whole or not at all, and lasts when the
/// call returns. RuntimeError 61, 70, ... when it fails, and then nothing was changed.
class IRowEditor {
public:
    virtual ~IRowEditor() = default;

    /// As IFeatureLayer::WhyReadOnly.
    virtual std::string WhyReadOnly() const = 0;

    /// RuntimeError when the column cannot hold the value.
    virtual void Check(int field, const platform::FieldValue& value) const = 0;

    /// RuntimeError when no rows can be appended.
    virtual void CheckInsert() const = 0;

    /// Deleted rows may stay in the file, marked, until Repack; object IDs do not change.
    virtual void Write(const RowEdits& edits) = 0;
    virtual void AddField(const platform::Field& field) = 0;
    virtual void DeleteField(int field) = 0;

    /// Drops marked rows; object IDs above them move up. Returns the object IDs dropped, ascending.
    virtual std::vector<std::int64_t> Repack() = 0;
};

}  // namespace wxl::files
