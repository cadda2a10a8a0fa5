#include "movement/duplicate_pass.h"

#include "movement/flushed.h"
#include "platform/checked.h"

#include <unordered_set>
#include <vector>

namespace wxl::movement {

using namespace wxl::platform;

namespace {

using Rows = std::vector<std::unique_ptr<IFeature>>;

Rows fill(IDuplicateIndex& index, IFeatureCursor& fixes) {
    Rows rows;
    while (auto fix = fixes.NextFeature()) {
        index.Add(rows.size(), *fix);
        rows.push_back(std::move(fix));
    }
    return rows;
}

/// Walks the fixes from `first` on and deletes the duplicates of each; how many were deleted.
std::int32_t walk(const DuplicatePass& pass, std::unique_ptr<IFeature> first, IFeatureCursor& cursor, const Rows& rows,
                  IDuplicateIndex& index) {
    std::unordered_set<std::int64_t> deleted;
    std::int32_t count = 0;
    std::int64_t position = 0;
    for (auto kept = std::move(first); kept; kept = cursor.NextFeature()) {
        if (deleted.contains(kept->OID())) continue;
        position = pass.Limit.Checked(position + 1);
        pass.PleaseWait.SetPosition(static_cast<double>(position));
        pass.Limit.Checked(kept->OID());
        index.TakeDuplicates(*kept, [&](std::size_t row) {
            rows[row]->Delete();
            deleted.insert(rows[row]->OID());
            count = sum_i32(count, 1);
        });
    }
    return count;
}

/// Walks with the cursors and features of its own, which are all gone when it returns: only then is the table in its
/// final state.
std::int32_t delete_duplicates(const DuplicatePass& pass, std::unique_ptr<IFeature> first,
                               std::unique_ptr<IFeatureCursor> cursor, ISelectionSet& selection, IDuplicateIndex& index,
                               bool withShape) {
    const auto fixes = selection.Find({.Where = std::nullopt, .WithShape = withShape});
    const Rows rows = fill(index, *fixes);
    return flushed(*fixes, [&] { return walk(pass, std::move(first), *cursor, rows, index); });
}

}  // namespace

void remove_duplicates(const DuplicatePass& pass, std::unique_ptr<IFeatureCursor> cursor, ISelectionSet& selection,
                       IDuplicateIndex& index, bool withShape) {
    auto first = cursor->NextFeature();
    if (!first) {
        pass.Messages.Show(
            {.Text = "You must select/highlight some points in the map to test. No points were tested or removed!!"});
        return;
    }
    pass.PleaseWait.Show();
    const std::int32_t count =
        delete_duplicates(pass, std::move(first), std::move(cursor), selection, index, withShape);
    pass.Document.Redraw();
    pass.PleaseWait.Hide();
    pass.Messages.Show({.Text = "Deleted " + std::to_string(count) + " duplicate features"});
}

}  // namespace wxl::movement
