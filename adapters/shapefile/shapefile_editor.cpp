#include "adapters/shapefile/shapefile_editor.h"

#include "adapters/disk/disk_output_file.h"
#include "adapters/disk/input_file.h"
#include "adapters/disk/posix_error.h"
#include "adapters/shapefile/dbf_cells.h"
#include "adapters/shapefile/dbf_file.h"
#include "adapters/shapefile/shapefile_parts.h"
#include "adapters/shapefile/shapefile_swap.h"
#include "adapters/shapefile/shp_file.h"
#include "platform/runtime_error.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace wxl::files {

using platform::Field;
using platform::FieldValue;
using platform::Raise;
namespace error_number = platform::error_number;
namespace fs = std::filesystem;

namespace {

std::string_view text_of(std::span<const char> bytes) {
    return {bytes.data(), bytes.size()};
}

void copy_bytes(const fs::path& from, const fs::path& to) {
    const InputFile input(from);
    DiskOutputFile output(to, platform::WriteMode::kReplace);
    std::string block(1 << 20, '\0');
    for (std::uint64_t at = 0; at < input.Size(); at += block.size()) {
        block.resize(static_cast<std::size_t>(std::min<std::uint64_t>(block.size(), input.Size() - at)));
        input.Read(at, block);
        output.Write(block);
    }
    output.Close();
}

/// Whether another program holds a lock on a file, of either kind that there is.
bool is_locked(const fs::path& file) {
    const int descriptor = ::open(file.c_str(), O_RDWR | O_CLOEXEC);
    if (descriptor < 0) return errno == EBUSY || errno == ETXTBSY;
    struct flock range = {};
    range.l_type = F_WRLCK;
    range.l_whence = SEEK_SET;
    const bool byRange = ::fcntl(descriptor, F_GETLK, &range) == 0 && range.l_type != F_UNLCK;
    const bool whole = ::flock(descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
    ::close(descriptor);
    return byRange || whole;
}

}  // namespace

FileStamp stamp_of(const fs::path& file) {
    struct stat status = {};
    if (::stat(file.c_str(), &status) != 0) return {};
    return {status.st_ino, status.st_mtim.tv_sec * 1'000'000'000 + status.st_mtim.tv_nsec,
            static_cast<std::uint64_t>(status.st_size)};
}

/// Holds the shapefile against other runs of ours while it is changed, and makes sure that it is what was read.
class ShapefileEditor::Locked {
public:
    explicit Locked(ShapefileEditor& editor) : m_editor(editor) {
        if (const std::string why = editor.WhyReadOnly(); !why.empty()) Raise(error_number::kPermissionDenied, why);
        m_descriptor = ::open(editor.m_shapefile.c_str(), O_RDONLY | O_CLOEXEC);
        if (m_descriptor < 0) RaiseErrno(errno, editor.m_shapefile);
        const bool busy = ::flock(m_descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
        const bool changed =
            stamp_of(editor.m_table) != editor.m_tableStamp || stamp_of(editor.m_shapefile) != editor.m_shapesStamp;
        if (!busy && !changed) return;
        ::close(m_descriptor);
        Raise(error_number::kPermissionDenied, editor.m_shapefile.string() + " was changed by another program.");
    }
    ~Locked() { ::close(m_descriptor); }
    Locked(const Locked&) = delete;
    Locked& operator=(const Locked&) = delete;

    /// The new state of the files is the one to be met from now on.
    void Done() { m_editor.Reload(); }

private:
    ShapefileEditor& m_editor;
    int m_descriptor = -1;
};

ShapefileEditor::ShapefileEditor(fs::path shapefile, std::string encoding)
    : m_shapefile(std::move(shapefile)), m_table(part_of(m_shapefile, "dbf")), m_encoding(std::move(encoding)) {
    Reload();
}

void ShapefileEditor::Reload() {
    m_tableStamp = stamp_of(m_table);
    m_shapesStamp = stamp_of(m_shapefile);
    m_layout = DbfLayout::Read(InputFile(m_table));
}

std::string ShapefileEditor::WhySwapBlocks() const {
    const Swap swap = find_swap(m_shapefile);
    if (swap.State == SwapState::kWaiting)
        return swap.Folder.string() + " holds a change that was cut short: it must be finished before another is made.";
    return swap.Trouble;
}

std::string ShapefileEditor::WhyReadOnly() const {
    const fs::path folder = m_shapefile.has_parent_path() ? m_shapefile.parent_path() : fs::path(".");
    if (is_protected(folder)) return "The folder " + folder.string() + " is read-only.";
    if (std::string why = WhySwapBlocks(); !why.empty()) return why;
    for (const fs::path& part : {m_table, m_shapefile, part_of(m_shapefile, "shx")}) {
        std::error_code ignored;
        if (!fs::exists(part, ignored)) return part.string() + " is missing.";
        if (fs::is_symlink(part, ignored)) return part.string() + " is a link: open the file that it points to.";
        if (is_protected(part)) return part.string() + " is read-only.";
        if (is_locked(part)) return part.string() + " is in use by another program.";
    }
    return {};
}

const DbfColumn& ShapefileEditor::Column(int field) const {
    if (field < 0 || static_cast<std::size_t>(field) >= m_layout.Columns().size()) Raise(error_number::kSubscript);
    return m_layout.Columns()[static_cast<std::size_t>(field)];
}

std::string ShapefileEditor::Cell(int field, const FieldValue& value) const {
    const DbfColumn& column = Column(field);
    // The name fills its place with null bytes.
    return dbf_cell(column, value, m_encoding, column.Descriptor.substr(0, column.Descriptor.find('\0')));
}

void ShapefileEditor::Check(int field, const FieldValue& value) const {
    Cell(field, value);
}

void ShapefileEditor::CheckInsert() const {
    std::string header(100, '\0');
    InputFile(m_shapefile).Read(0, header);
    if (!holds_plane_shapes(header))
        Raise(error_number::kInvalidCall,
              m_shapefile.string() + " holds shapes with heights or measures: no plane shape can be added.");
}

void ShapefileEditor::Patch(std::uint32_t row, std::span<char> record, const RowEdits& edits) const {
    if (edits.Deleted.contains(row)) record[0] = kDeletedMark;
    const auto values = edits.Values.find(row);
    if (values == edits.Values.end()) return;
    for (const auto& [field, value] : values->second) {
        const std::string cell = Cell(field, value);
        std::copy(cell.begin(), cell.end(), record.begin() + static_cast<std::ptrdiff_t>(Column(field).Offset));
    }
}

std::string ShapefileEditor::Record(const NewRow& row) const {
    std::string record = m_layout.BlankRecord();
    for (std::size_t i = 0; i < row.Values.size(); ++i) {
        const int field = static_cast<int>(i);
        record.replace(Column(field).Offset, Column(field).Width, Cell(field, row.Values[i]));
    }
    return record;
}

void ShapefileEditor::Write(const RowEdits& edits) {
    Locked lock(*this);
    remove_indexes(m_shapefile, !edits.Inserted.empty());
    if (edits.Inserted.empty())
        WriteTable(edits);
    else
        WriteAll(edits);
    lock.Done();
}

void ShapefileEditor::WriteTable(const RowEdits& edits) {
    PartsSwap swap(m_shapefile);
    const DbfReader table(m_table);
    DbfWriter writer(swap.Replacement(m_table), m_layout);
    table.ForEach([&](std::uint32_t row, std::span<char> record) {
        Patch(row, record, edits);
        writer.Append(text_of(record));
    });
    writer.Close();
    swap.Commit();
}

void ShapefileEditor::WriteAll(const RowEdits& edits) {
    const fs::path index = part_of(m_shapefile, "shx");
    PartsSwap swap(m_shapefile);
    const DbfReader table(m_table);
    const ShpReader shapes(m_shapefile, index);
    DbfWriter tableWriter(swap.Replacement(m_table), m_layout);
    ShpWriter shapesWriter(swap.Replacement(m_shapefile), swap.Replacement(index), shapes.Header());
    if (shapes.Rows() != table.Layout().Rows()) raise_damaged(m_shapefile, "its table has another number of rows");
    table.ForEach([&](std::uint32_t row, std::span<char> record) {
        Patch(row, record, edits);
        tableWriter.Append(text_of(record));
        shapesWriter.Append(shapes.Record(row));
    });
    for (const NewRow& row : edits.Inserted) {
        tableWriter.Append(Record(row));
        shapesWriter.Append(shape_record(row.Shape));
    }
    tableWriter.Close();
    shapesWriter.Close();
    swap.Commit();
}

void ShapefileEditor::AddField(const Field& field) {
    Locked lock(*this);
    DbfLayout layout = m_layout;
    layout.AddColumn(field, encode_text(field.Name, m_encoding));
    PartsSwap swap(m_shapefile);
    const DbfReader table(m_table);
    DbfWriter writer(swap.Replacement(m_table), layout);
    const std::size_t before = layout.Columns().back().Offset;
    const std::string cell(layout.Columns().back().Width, ' ');
    table.ForEach([&](std::uint32_t, std::span<char> record) {
        std::string wider(text_of(record));
        writer.Append(wider.insert(before, cell));
    });
    writer.Close();
    swap.Commit();
    lock.Done();
}

void ShapefileEditor::DeleteField(int field) {
    Locked lock(*this);
    const DbfColumn column = Column(field);
    if (m_layout.Columns().size() == 1)
        Raise(error_number::kInvalidCall, "The last field of a table cannot be deleted.");
    DbfLayout layout = m_layout;
    layout.DropColumn(static_cast<std::size_t>(field));
    remove_indexes(m_shapefile, false);
    PartsSwap swap(m_shapefile);
    const DbfReader table(m_table);
    DbfWriter writer(swap.Replacement(m_table), layout);
    table.ForEach([&](std::uint32_t, std::span<char> record) {
        std::string narrower(text_of(record));
        writer.Append(narrower.erase(column.Offset, column.Width));
    });
    writer.Close();
    swap.Commit();
    lock.Done();
}

std::vector<std::int64_t> ShapefileEditor::Repack() {
    Locked lock(*this);
    const fs::path index = part_of(m_shapefile, "shx");
    std::vector<std::int64_t> dropped;
    PartsSwap swap(m_shapefile);
    const DbfReader table(m_table);
    const ShpReader shapes(m_shapefile, index);
    DbfWriter tableWriter(swap.Replacement(m_table), m_layout);
    ShpWriter shapesWriter(swap.Replacement(m_shapefile), swap.Replacement(index), shapes.Header());
    if (shapes.Rows() != table.Layout().Rows()) raise_damaged(m_shapefile, "its table has another number of rows");
    table.ForEach([&](std::uint32_t row, std::span<char> record) {
        if (record[0] == kDeletedMark) return dropped.push_back(row);
        tableWriter.Append(text_of(record));
        shapesWriter.Append(shapes.Record(row));
    });
    tableWriter.Close();
    shapesWriter.Close();
    remove_indexes(m_shapefile, true);
    swap.Commit();
    lock.Done();
    return dropped;
}

void ShapefileEditor::Replace(const fs::path& other) {
    Locked lock(*this);
    PartsSwap swap(m_shapefile);
    for (const char* extension : {"shp", "shx", "dbf"}) {
        copy_bytes(part_of(other, extension), swap.Replacement(part_of(m_shapefile, extension)));
    }
    remove_indexes(m_shapefile, true);
    swap.Commit();
    lock.Done();
}

std::int64_t ShapefileEditor::CountRows() const {
    std::int64_t count = 0;
    DbfReader(m_table).ForEach([&](std::uint32_t, std::span<char> record) {
        if (record[0] != kDeletedMark) ++count;
    });
    return count;
}

}  // namespace wxl::files
