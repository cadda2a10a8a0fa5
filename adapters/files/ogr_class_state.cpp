#include "adapters/files/ogr_class_state.h"

#include "adapters/files/shapefile_check.h"
#include "adapters/files/shapefile_parts.h"
#include "adapters/files/stored_name.h"
#include "adapters/files/transaction_editor.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <cmath>

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

bool is_shapefile(const fs::path& path) {
    return platform::EqualNoCase(path.extension().string(), ".shp");
}

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

}  // namespace

Pass::~Pass() {
    m_state->Finish();
}

OgrFeatureClass::State::State(const std::string& input, Sources sources) : m_sources(sources) {
    auto [path, layer] = split_input(input, sources);
    std::error_code ignored;
    const bool isLocal = fs::exists(path, ignored);
    if (sources == Sources::kPlain) CheckPlain(path);
    m_path = isLocal ? fs::canonical(path) : path;
    m_name = std::move(layer);
    m_isShapefile = is_shapefile(m_path);
    Load();
}

void OgrFeatureClass::State::Load() {
    if (m_isShapefile)
        finish_interrupted_swap(m_path);
    else
        TransactionEditor::FinishInterrupted(m_path);
    DropSources();
    m_stamp = stamp_of(m_isShapefile ? part_of(m_path, "dbf") : m_path);
    m_count.reset();
    if (m_isShapefile) CheckShapefile(m_path);
    auto source = std::make_unique<OgrSource>(m_path, m_name, m_sources);
    m_isShapefile = m_isShapefile && source->DriverName() == "ESRI Shapefile";
    const GdalErrors errors;
    m_name = source->Layer().GetName();
    m_fields = fields_of(source->Layer());
    m_shape = shape_type_of(source->Layer());
    if (errors.Failed()) errors.RaiseReading(m_path);
    m_reference = FromOgr(source->Layer().GetSpatialRef());
    if (errors.Failed())
        Raise(error_number::kDeviceIo,
              (m_isShapefile ? part_of(m_path, "prj") : m_path).string() +
                  " holds no coordinate system that can be read: correct it, or take it out to go on without one.");
    if (m_isShapefile) m_reference = NamedAsStored(std::move(m_reference), m_path);
    m_encoding = m_isShapefile ? table_encoding(source->Layer()) : "";
    LoadEditor(*source);
    GiveBack(std::move(source));
}

void OgrFeatureClass::State::LoadEditor(OgrSource& source) {
    m_editor.reset();
    if (TransactionEditor::Suits(source.DriverName())) {
        m_editor = std::make_unique<TransactionEditor>(m_path, m_name);
        return;
    }
    m_whyNoEditor = m_path.string() + " is of a format (" + source.DriverName() +
                    ") that is only read. Shapefiles and GeoPackages can be changed.";
    if (!m_isShapefile) return;
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

std::string OgrFeatureClass::State::WhyReadOnly() const {
    return m_editor ? m_editor->WhyReadOnly() : m_whyNoEditor;
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
    const bool changedByOthers = stamp_of(m_isShapefile ? part_of(m_path, "dbf") : m_path) != m_stamp;
    if (changedByOthers) Load();
    auto pass = std::make_shared<Pass>(shared_from_this());
    m_pass = pass;
    return pass;
}

std::unique_ptr<OgrSource> OgrFeatureClass::State::Borrow(const platform::Search& wanted) {
    std::unique_ptr<OgrSource> source;
    if (m_idle.empty()) {
        source = std::make_unique<OgrSource>(m_path, m_name, m_sources);
    } else {
        source = std::move(m_idle.back());
        m_idle.pop_back();
    }
    source->Version = m_version;
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
    return PointShapefile::Open(m_path, m_fields, columns_asked_for(wanted), m_encoding);
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
    m_count.reset();
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

std::int64_t OgrFeatureClass::State::FeatureCount() {
    const auto pass = JoinPass();
    if (!m_count) {
        const auto* shapefile = dynamic_cast<const ShapefileEditor*>(m_editor.get());
        auto source = Borrow({.WithShape = false});
        m_count = shapefile ? shapefile->CountRows() : source->Layer().GetFeatureCount();
        GiveBack(std::move(source));
    }
    return *m_count - static_cast<std::int64_t>(m_edits.Deleted.size());
}

Extent OgrFeatureClass::State::Bounds() {
    const auto pass = JoinPass();
    if (FeatureCount() == 0) return {};
    auto source = Borrow({});
    OGREnvelope envelope;
    const bool known = source->Layer().GetExtent(&envelope, TRUE) == OGRERR_NONE;
    Extent bounds{envelope.MinX, envelope.MinY, envelope.MaxX, envelope.MaxY};
    // A shapefile without any shape says 0, 0, 0, 0; a damaged header may say anything.
    const bool suspect = (bounds.Width() == 0.0 && bounds.Height() == 0.0) || !std::isfinite(bounds.Width()) ||
                         !std::isfinite(bounds.Height());
    if (!known || suspect) bounds = ScannedBounds(source->Layer());
    GiveBack(std::move(source));
    return bounds;
}

Extent OgrFeatureClass::State::ScannedBounds(OGRLayer& layer) {
    Extent bounds;
    layer.ResetReading();
    for (const auto& feature : layer) {
        const OGRGeometry* geometry = feature->GetGeometryRef();
        if (geometry == nullptr || geometry->IsEmpty()) continue;
        OGREnvelope envelope;
        geometry->getEnvelope(&envelope);
        for (const Point& corner : {Point{envelope.MinX, envelope.MinY}, Point{envelope.MaxX, envelope.MaxY}})
            if (is_finite(corner)) bounds.Include(corner);
    }
    return bounds;
}

std::vector<std::int64_t> OgrFeatureClass::State::OIDs(const std::string& condition) {
    const auto pass = JoinPass();
    auto source = Borrow({.WithShape = false});
    std::vector<std::int64_t> oids;
    {
        const GdalErrors errors;
        if (!condition.empty() && source->Layer().SetAttributeFilter(condition.c_str()) != OGRERR_NONE)
            Raise(error_number::kInvalidCall, "The condition \"" + condition + "\" means nothing: " + errors.Text());
        for (const auto& feature : source->Layer())
            if (!IsDeleted(feature->GetFID())) oids.push_back(feature->GetFID());
        if (errors.Failed() && oids.empty() && !condition.empty())
            Raise(error_number::kInvalidCall, "The condition \"" + condition + "\" means nothing: " + errors.Text());
    }
    GiveBack(std::move(source));
    std::sort(oids.begin(), oids.end());
    return oids;
}

std::vector<std::int64_t> OgrFeatureClass::State::Follow(std::span<const std::int64_t> oids,
                                                         std::size_t generation) const {
    std::vector<std::int64_t> now(oids.begin(), oids.end());
    for (; generation < m_removals.size(); ++generation) {
        const Removal& removal = m_removals[generation];
        std::vector<std::int64_t> next;
        for (const std::int64_t oid : now) {
            const auto place = std::lower_bound(removal.OIDs.begin(), removal.OIDs.end(), oid);
            if (place != removal.OIDs.end() && *place == oid) continue;
            next.push_back(removal.OthersMoveUp ? oid - (place - removal.OIDs.begin()) : oid);
        }
        now = std::move(next);
    }
    std::erase_if(now, [&](std::int64_t oid) { return IsDeleted(oid); });
    return now;
}

}  // namespace wxl::files
