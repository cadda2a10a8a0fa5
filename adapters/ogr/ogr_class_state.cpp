#include "adapters/ogr/ogr_class_state.h"

#include "adapters/gdal/text_lengths.h"
#include "adapters/ogr/stored_name.h"
#include "adapters/ogr/transaction_editor.h"
#include "adapters/ogr/unread_shapes.h"
#include "adapters/shapefile/shapefile_check.h"
#include "adapters/shapefile/shapefile_parts.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <iterator>
#include <unistd.h>
#include <unordered_map>

namespace wxl::files {

using platform::Extent;
using platform::Field;
using platform::FieldValue;
using platform::Geometry;
using platform::Point;
using platform::Raise;
using platform::RuntimeError;
namespace error_number = platform::error_number;
namespace fs = std::filesystem;

namespace {

bool is_finite(const Point& point) {
    return std::isfinite(point.X) && std::isfinite(point.Y);
}

bool is_finite(const Geometry& shape) {
    return is_finite(shape.Location) && std::all_of(shape.Parts.begin(), shape.Parts.end(), [](const auto& part) {
               return std::all_of(part.begin(), part.end(), [](const Point& p) { return is_finite(p); });
           });
}

/// Empty: all.
std::vector<std::string> columns_asked_for(const platform::Search& search) {
    std::vector<std::string> columns = search.Fields;
    if (search.Where && !columns.empty()) columns.push_back(search.Where->Field);
    return columns;
}

RowOrder order_of(const std::vector<std::int64_t>& numbers) {
    if (std::is_sorted(numbers.begin(), numbers.end(), std::less_equal<>())) return RowOrder::kRising;
    std::vector<std::int64_t> sorted = numbers;
    std::sort(sorted.begin(), sorted.end());
    const bool repeats = std::adjacent_find(sorted.begin(), sorted.end()) != sorted.end();
    return repeats ? RowOrder::kRepeating : RowOrder::kUnordered;
}

/// Takes one row that equals this one from the others; false when none does.
bool take_equal(std::vector<OGRFeatureUniquePtr>& others, const OGRFeature& row) {
    const auto equal = std::find_if(others.begin(), others.end(),
                                    [&](const OGRFeatureUniquePtr& other) { return other->Equal(&row) != 0; });
    if (equal == others.end()) return false;
    others.erase(equal);
    return true;
}

[[noreturn]] void raise_unread(const fs::path& path, const std::string& row, const std::string& reason) {
    Raise(error_number::kDeviceIo, path.string() + ": " + row + " could not be read" +
                                       (reason.empty() ? "" : " (" + reason + ")") +
                                       ": correct it, or take it out of the file");
}

}  // namespace

Pass::~Pass() {
    m_state->Finish();
}

OgrFeatureClass::State::State(const std::string& input, Sources sources) : m_sources(sources) {
    auto [path, layer] = split_input(input, sources);
    std::error_code ignored;
    const bool isLocal = fs::exists(path, ignored);
    if (sources == Sources::kPlain) CheckPlain(path);
    m_path = isLocal ? main_file_of(fs::canonical(path), layer) : path;
    if (sources == Sources::kPlain && m_path != path) CheckPlain(m_path);
    if (sources == Sources::kPlain) CheckXmlTexts(m_path);
    m_name = std::move(layer);
    m_isShapefile = is_shapefile(m_path);
    Load();
}

void OgrFeatureClass::State::GatherParts() {
    m_gathered.reset();
    if (!m_isShapefile) return;
    const Swap swap = find_swap(m_path);
    if (swap.State == SwapState::kBroken) Raise(error_number::kPermissionDenied, swap.Trouble);
    if (swap.State == SwapState::kWaiting) m_gathered = std::make_unique<GatheredShapefile>(m_path, swap);
}

void OgrFeatureClass::State::Load() {
    DropSources();
    ++m_loads;
    m_stamp = stamp_of(m_isShapefile ? part_of(m_path, "dbf") : m_path);
    GatherParts();
    if (m_isShapefile) CheckShapefile(PathToRead());
    auto source = std::make_unique<OgrSource>(PathToRead(), m_name, m_sources);
    m_driver = source->DriverName();
    m_isShapefile = m_isShapefile && m_driver == "ESRI Shapefile";
    const fs::path withReference = m_isShapefile ? part_of(m_path, "prj") : m_path;
    const GdalErrors errors;
    m_files = source->Files();
    m_files.push_back(m_path);
    if (m_isShapefile) std::ranges::copy(parts_of(m_path), std::back_inserter(m_files));
    m_name = source->Layer().GetName();
    m_fields = fields_of(source->Layer());
    m_shape = shape_type_of(source->Layer());
    CheckGrids(withReference);
    if (errors.Failed()) errors.RaiseReading(m_path);
    m_reference = FromOgr(source->Layer().GetSpatialRef());
    CheckGrids(withReference);
    if (errors.Failed())
        Raise(error_number::kDeviceIo,
              withReference.string() +
                  " holds no coordinate system that can be read: correct it, or take it out to go on without one.");
    if (m_isShapefile) m_reference = NamedAsStored(std::move(m_reference), m_path);
    m_encoding = m_isShapefile ? table_encoding(source->Layer()) : "";
    LoadEditor(*source);
    GiveBack(std::move(source));
}

void OgrFeatureClass::State::LoadEditor(OgrSource& source) {
    m_editor.reset();
    m_isView = source.IsView();
    m_isTable = !m_isView && TransactionEditor::Suits(source.DriverName()) && *source.Layer().GetFIDColumn() != '\0';
    if (m_isTable) {
        m_editor = std::make_unique<TransactionEditor>(m_path, m_name, source.Layer().GetLayerDefn());
        return;
    }
    m_whyNoEditor = m_path.string() + ": the layer \"" + m_name +
                    "\" is a view, and the rows of a view cannot be changed. Name the layer that its rows come from.";
    if (m_isView) return;
    m_whyNoEditor = m_path.string() + " is of a format (" + source.DriverName() +
                    ") that is only read. Shapefiles and GeoPackages can be changed.";
    if (!m_isShapefile) return;
    if (m_gathered) {
        m_whyNoEditor = find_swap(m_path).Folder.string() +
                        " holds a change that was cut short: it must be finished before another is made.";
        return;
    }
    try {
        m_editor = std::make_unique<ShapefileEditor>(m_path, m_encoding);
    } catch (const RuntimeError& error) {
        m_whyNoEditor = error.Description;
    }
}

IRowEditor& OgrFeatureClass::State::Editor() const {
    if (!m_editor) Raise(error_number::kPermissionDenied, m_whyNoEditor);
    return *m_editor;
}

std::string OgrFeatureClass::State::WhyReadOnly() {
    if (!m_editor) return m_whyNoEditor;
    const auto pass = JoinPass();
    if (Order() == RowOrder::kRepeating)
        return m_path.string() + ": several rows of the layer \"" + m_name +
               "\" have one row number, so that none can be changed alone.";
    return m_editor->WhyReadOnly();
}

void OgrFeatureClass::State::DropSources() {
    m_idle.clear();
    ++m_version;
    m_numbers.reset();
    m_order.reset();
    m_count.reset();
    m_bounds.reset();
    m_unreadShapes.reset();
}

int OgrFeatureClass::State::FindField(std::string_view name) const {
    const auto found = std::find_if(m_fields.begin(), m_fields.end(),
                                    [&](const Field& f) { return platform::EqualNoCase(f.Name, name); });
    return found == m_fields.end() ? -1 : static_cast<int>(found - m_fields.begin());
}

int OgrFeatureClass::State::AddField(const Field& field) {
    const auto pass = JoinPass();
    if (field.Name.empty() || FindField(field.Name) >= 0)
        Raise(error_number::kInvalidCall, "The field name \"" + field.Name + "\" is empty or taken.");
    Commit();
    Editor().AddField(field);
    Load();
    return FindField(field.Name);
}

void OgrFeatureClass::State::DeleteField(int field) {
    const auto pass = JoinPass();
    if (field < 0 || static_cast<std::size_t>(field) >= m_fields.size()) Raise(error_number::kSubscript);
    Commit();
    Editor().DeleteField(field);
    Load();
}

std::shared_ptr<Pass> OgrFeatureClass::State::JoinPass() {
    if (auto pass = m_pass.lock()) return pass;
    if (IsChangedByOthers()) Load();
    auto pass = std::make_shared<Pass>(shared_from_this());
    m_pass = pass;
    return pass;
}

bool OgrFeatureClass::State::IsChangedByOthers() const {
    if (stamp_of(m_isShapefile ? part_of(m_path, "dbf") : m_path) != m_stamp) return true;
    return m_gathered && find_swap(m_path).State != SwapState::kWaiting;
}

std::unique_ptr<OgrSource> OgrFeatureClass::State::Borrow(const platform::Search& wanted) {
    std::unique_ptr<OgrSource> source;
    if (m_idle.empty()) {
        source = std::make_unique<OgrSource>(PathToRead(), m_name, m_sources);
    } else {
        source = std::move(m_idle.back());
        m_idle.pop_back();
    }
    source->Version = m_version;
    // Which columns are asked of a view may decide in which order a database gives its rows.
    if (m_isView)
        source->SetWanted(true, {});
    else
        source->SetWanted(wanted.WithShape, columns_asked_for(wanted));
    source->Layer().SetAttributeFilter(nullptr);
    source->Layer().ResetReading();
    return source;
}

void OgrFeatureClass::State::GiveBack(std::unique_ptr<OgrSource> source) {
    source->Layer().ResetReading();
    if (source->Version == m_version) m_idle.emplace_back(std::move(source));
}

std::unique_ptr<PointShapefile> OgrFeatureClass::State::Points(const platform::Search& wanted) const {
    if (!m_isShapefile || m_shape != platform::ShapeType::kPoint) return nullptr;
    return PointShapefile::Open(PathToRead(), m_fields, columns_asked_for(wanted), m_encoding);
}

const FieldValue* OgrFeatureClass::State::HeldBack(std::int64_t oid, int field) const {
    if (m_edits.Values.empty()) return nullptr;
    const auto row = m_edits.Values.find(oid);
    if (row == m_edits.Values.end()) return nullptr;
    const auto cell = row->second.find(field);
    return cell == row->second.end() ? nullptr : &cell->second;
}

FieldValue OgrFeatureClass::State::Checked(int field, const FieldValue& value) const {
    if (field < 0 || static_cast<std::size_t>(field) >= m_fields.size()) Raise(error_number::kSubscript);
    FieldValue held = platform::ValueForColumn(value, m_fields[static_cast<std::size_t>(field)].Type);
    Editor().Check(field, held);
    return held;
}

void OgrFeatureClass::State::Store(std::int64_t oid, const std::map<int, FieldValue>& values) {
    if (IsDeleted(oid))
        Raise(error_number::kInvalidCall, "There is no feature with the object ID " + std::to_string(oid) + ".");
    auto& row = m_edits.Values[oid];
    for (const auto& [field, value] : values) row[field] = value;
}

void OgrFeatureClass::State::Delete(std::int64_t oid) {
    Editor();
    if (IsDeleted(oid))
        Raise(error_number::kInvalidCall, "There is no feature with the object ID " + std::to_string(oid) + ".");
    m_edits.Deleted.insert(oid);
    m_bounds.reset();
}

void OgrFeatureClass::State::Insert(const Geometry& shape, std::span<const FieldValue> values) {
    if (values.size() > m_fields.size()) Raise(error_number::kSubscript);
    if (!shape.IsNull() && shape.Type != m_shape)
        Raise(error_number::kInvalidCall, "The shape does not suit the feature class.");
    if (!is_finite(shape)) Raise(error_number::kInvalidCall, "A shape has a coordinate that is not a finite number.");
    NewRow row{shape, {}};
    for (std::size_t i = 0; i < values.size(); ++i) row.Values.push_back(Checked(static_cast<int>(i), values[i]));
    m_edits.Inserted.push_back(std::move(row));
}

void OgrFeatureClass::State::Commit() {
    if (m_edits.IsEmpty()) return;
    Editor().Write(m_edits);
    m_marked.merge(m_edits.Deleted);
    m_edits = {};
    DropSources();
    m_stamp = stamp_of(m_isShapefile ? part_of(m_path, "dbf") : m_path);
}

void OgrFeatureClass::State::Finish() noexcept {
    try {
        Commit();
    } catch (...) {
        // Whoever wants to know calls Flush.
        m_edits = {};
    }
    if (m_marked.empty()) return;
    Removal removal{{m_marked.begin(), m_marked.end()}, false};
    m_marked.clear();
    try {
        auto dropped = m_editor->Repack();
        removal.OthersMoveUp = !dropped.empty();
        if (removal.OthersMoveUp) removal.OIDs = std::move(dropped);
        DropSources();
        m_stamp = stamp_of(m_isShapefile ? part_of(m_path, "dbf") : m_path);
    } catch (...) {
        // The rows stay in the file, marked: every reader skips them.
    }
    m_removals.push_back(std::move(removal));
}

std::shared_ptr<const std::vector<std::int64_t>> OgrFeatureClass::State::Numbers() {
    if (m_numbers) return m_numbers;
    auto source = Borrow({.WithShape = false, .Fields = kNoCells});
    std::vector<std::int64_t> numbers;
    RowReader rows(*this, source->Layer());
    while (const OGRFeatureUniquePtr row = rows.Next()) numbers.push_back(row->GetFID());
    GiveBack(std::move(source));
    // A table is read by ranges of its numbers, whatever index a database took them from here.
    if (m_isTable) std::sort(numbers.begin(), numbers.end());
    m_numbers = std::make_shared<const std::vector<std::int64_t>>(std::move(numbers));
    return m_numbers;
}

RowOrder OgrFeatureClass::State::Order() {
    if (m_isShapefile) return RowOrder::kRising;
    if (!m_order) m_order = order_of(*Numbers());
    return *m_order;
}

std::int64_t OgrFeatureClass::State::FeatureCount() {
    const auto pass = JoinPass();
    if (!m_count) {
        const auto* shapefile = dynamic_cast<const ShapefileEditor*>(m_editor.get());
        m_count = shapefile ? shapefile->CountRows() : static_cast<std::int64_t>(Numbers()->size());
    }
    return *m_count - static_cast<std::int64_t>(m_edits.Deleted.size());
}

Extent OgrFeatureClass::State::Bounds() {
    const auto pass = JoinPass();
    if (!m_bounds) m_bounds = bounds_of(pass);
    return *m_bounds;
}

const std::set<std::int64_t>& OgrFeatureClass::State::UnreadShapes() {
    if (!m_unreadShapes) m_unreadShapes = unread_shapes(PathToRead(), m_name, m_driver, m_sources);
    return *m_unreadShapes;
}

void OgrFeatureClass::State::CheckHasNoShape(std::int64_t oid) {
    if (UnreadShapes().contains(oid)) raise_unread(m_path, "the row " + std::to_string(oid), "its location means none");
}

void OgrFeatureClass::State::RaiseUnread(const std::string& row, const GdalErrors& errors) {
    if (::access(m_path.c_str(), R_OK) != 0) errors.RaiseReading(m_path);
    // GeoJSON is read far ahead of the row that is given.
    const bool isKnown = m_driver == "GeoJSON" && !UnreadShapes().empty();
    raise_unread(m_path, isKnown ? "the row " + std::to_string(*UnreadShapes().begin()) : row, errors.Text());
}

std::vector<std::int64_t> OgrFeatureClass::State::OIDs(const std::string& condition) {
    const auto pass = JoinPass();
    std::vector<std::int64_t> oids;
    ForEach(condition, {.WithShape = false}, [&](const OGRFeatureUniquePtr& row) {
        if (!IsDeleted(row->GetFID())) oids.push_back(row->GetFID());
    });
    std::sort(oids.begin(), oids.end());
    return oids;
}

template <class Action>
void OgrFeatureClass::State::ForEach(const std::string& condition, const platform::Search& wanted, Action&& action) {
    auto source = Borrow(wanted);
    const GdalErrors errors;
    const auto means_nothing = [&] {
        Raise(error_number::kInvalidCall, "The condition \"" + condition + "\" means nothing: " + errors.Text());
    };
    if (!condition.empty() && source->Layer().SetAttributeFilter(condition.c_str()) != OGRERR_NONE) means_nothing();
    RowReader rows(*this, source->Layer());
    // Databases understand a condition only when the first row is asked for.
    OGRFeatureUniquePtr row(condition.empty() ? rows.Next() : OGRFeatureUniquePtr(source->Layer().GetNextFeature()));
    if (errors.Failed() && !row) means_nothing();
    if (errors.Failed()) RaiseUnread("the row " + std::to_string(row->GetFID()), errors);
    for (; row; row = rows.Next()) action(std::move(row));
    GiveBack(std::move(source));
}

ChosenRows OgrFeatureClass::State::Choose(std::vector<std::int64_t> oids) {
    const auto pass = JoinPass();
    std::sort(oids.begin(), oids.end());
    oids.erase(std::unique(oids.begin(), oids.end()), oids.end());
    if (Order() != RowOrder::kRising) return {PlacesOf(oids), true, m_loads};
    const std::vector<std::int64_t> all = OIDs({});
    ChosenRows chosen{{}, false, m_removals.size()};
    std::set_intersection(all.begin(), all.end(), oids.begin(), oids.end(), std::back_inserter(chosen.Rows));
    return chosen;
}

ChosenRows OgrFeatureClass::State::ChooseWhere(const std::string& condition) {
    const auto pass = JoinPass();
    switch (Order()) {
        case RowOrder::kRepeating:
            return {PlacesWhere(condition), true, m_loads};
        case RowOrder::kUnordered:
            return {PlacesOf(OIDs(condition)), true, m_loads};
        case RowOrder::kRising:
            break;
    }
    return {OIDs(condition), false, m_removals.size()};
}

std::vector<std::int64_t> OgrFeatureClass::State::PlacesOf(const std::vector<std::int64_t>& oids) {
    std::vector<std::int64_t> places;
    const auto numbers = Numbers();
    for (std::size_t place = 0; place < numbers->size(); ++place)
        if (std::binary_search(oids.begin(), oids.end(), (*numbers)[place]))
            places.push_back(static_cast<std::int64_t>(place));
    return places;
}

/// A row is known by its number and all that it holds: rows that are equal in all meet a condition together.
std::vector<std::int64_t> OgrFeatureClass::State::PlacesWhere(const std::string& condition) {
    std::unordered_map<GIntBig, std::vector<OGRFeatureUniquePtr>> matches;
    ForEach(condition, {}, [&](OGRFeatureUniquePtr row) { matches[row->GetFID()].push_back(std::move(row)); });
    std::vector<std::int64_t> places;
    std::int64_t place = 0;
    ForEach({}, {}, [&](const OGRFeatureUniquePtr& row) {
        if (const auto alike = matches.find(row->GetFID()); alike != matches.end())
            if (take_equal(alike->second, *row)) places.push_back(place);
        ++place;
    });
    if (std::any_of(matches.begin(), matches.end(), [](const auto& alike) { return !alike.second.empty(); }))
        Raise(error_number::kInvalidCall,
              m_path.string() + ": the rows that meet the condition \"" + condition +
                  "\" cannot be told from others, because row numbers repeat. Give each row a number of its own.");
    return places;
}

void OgrFeatureClass::State::Follow(ChosenRows& rows) const {
    if (rows.ArePlaces) {
        if (rows.Generation != m_loads)
            Raise(error_number::kPermissionDenied, m_path.string() + " was changed by another program.");
        return;
    }
    for (; rows.Generation < m_removals.size(); ++rows.Generation) {
        const Removal& removal = m_removals[rows.Generation];
        std::vector<std::int64_t> next;
        for (const std::int64_t oid : rows.Rows) {
            const auto place = std::lower_bound(removal.OIDs.begin(), removal.OIDs.end(), oid);
            if (place != removal.OIDs.end() && *place == oid) continue;
            next.push_back(removal.OthersMoveUp ? oid - (place - removal.OIDs.begin()) : oid);
        }
        rows.Rows = std::move(next);
    }
    std::erase_if(rows.Rows, [&](std::int64_t oid) { return IsDeleted(oid); });
}

}  // namespace wxl::files
