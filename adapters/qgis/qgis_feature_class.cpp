#include "adapters/qgis/qgis_feature_class.h"

#include "adapters/qgis/qgis_values.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <deque>
#include <map>
#include <qgsexpression.h>
#include <qgsfeatureiterator.h>
#include <qgsfeaturerequest.h>
#include <qgsvectordataprovider.h>
#include <qgsvectorlayer.h>
#include <QPointer>

namespace wxl::qgis {

using platform::error_number::kDeviceIo;
using platform::error_number::kObjectNotSet;
using platform::error_number::kPermissionDenied;
using platform::error_number::kSubscript;

/// A layer with the changes that are not written yet.
struct TableState {
    QPointer<QgsVectorLayer> Layer;
    QgsChangedAttributesMap Changes;
    QgsFeatureIds ToDelete;  ///< no cursor meets these rows again, though they still stand in the store

    QgsVectorLayer& Open() const {
        if (Layer.isNull()) platform::Raise(kObjectNotSet, "The layer was removed from the map.");
        return *Layer;
    }

    void Fail(const char* what) const {
        platform::Raise(kDeviceIo, "The layer \"" + FromQString(Open().name()) + "\" could not be changed (" + what +
                                       "): " + FromQString(Open().dataProvider()->error().message()));
    }

    void Flush() {
        QgsVectorLayer& layer = Open();
        if (!Changes.isEmpty()) {
            const QgsChangedAttributesMap changes = std::exchange(Changes, {});
            if (layer.isEditable()) {
                layer.beginEditCommand(QStringLiteral("WXL Tools"));
                for (auto row = changes.begin(); row != changes.end(); ++row)
                    if (!layer.changeAttributeValues(row.key(), row.value())) Fail("attribute values");
                layer.endEditCommand();
            } else if (!layer.dataProvider()->changeAttributeValues(changes)) {
                Fail("attribute values");
            }
        }
        if (!ToDelete.isEmpty()) {
            // One call with all ids: every provider call renumbers a shapefile's rows.
            const QgsFeatureIds ids = std::exchange(ToDelete, {});
            if (layer.isEditable()) {
                layer.beginEditCommand(QStringLiteral("WXL Tools"));
                if (!layer.deleteFeatures(ids)) Fail("rows");
                layer.endEditCommand();
            } else if (!layer.dataProvider()->deleteFeatures(ids)) {
                Fail("rows");
            }
            layer.removeSelection();
        }
    }
};

namespace {

/// One pass state per layer, shared by its class and its selection: a row deleted through one is gone for the other.
std::shared_ptr<TableState> state_of(QgsVectorLayer& layer) {
    static std::map<QgsVectorLayer*, std::weak_ptr<TableState>> open;
    std::erase_if(open, [](const auto& entry) { return entry.second.expired(); });
    if (auto state = open[&layer].lock(); state && !state->Layer.isNull()) return state;
    auto state = std::make_shared<TableState>();
    state->Layer = &layer;
    open[&layer] = state;
    return state;
}

class QgisFeature final : public platform::IFeature {
public:
    QgisFeature(std::shared_ptr<TableState> state, QgsFeature feature)
        : m_state(std::move(state)), m_feature(std::move(feature)) {}

    std::int64_t OID() const override { return m_feature.id(); }
    platform::Geometry Shape() const override { return FromQgsGeometry(m_feature.geometry()); }

    platform::FieldValue Value(int field) const override {
        CheckField(field);
        return FromVariant(m_feature.attribute(field));
    }

    void SetValue(int field, const platform::FieldValue& value) override {
        CheckField(field);
        const QVariant changed = ToVariant(value, m_state->Open().fields().at(field).type());
        m_feature.setAttribute(field, changed);
        m_changed[field] = changed;
    }

    void Store() override {
        for (auto cell = m_changed.begin(); cell != m_changed.end(); ++cell)
            m_state->Changes[m_feature.id()][cell.key()] = cell.value();
        m_changed.clear();
    }

    void Delete() override { m_state->ToDelete.insert(m_feature.id()); }

private:
    void CheckField(int field) const {
        if (field < 0 || field >= m_feature.attributeCount()) platform::Raise(kSubscript);
    }

    std::shared_ptr<TableState> m_state;
    QgsFeature m_feature;
    QgsAttributeMap m_changed;
};

QgsFeatureRequest request_of(const QgsVectorLayer& layer, const platform::Search& search) {
    QgsFeatureRequest request;
    if (!search.WithShape) request.setFlags(QgsFeatureRequest::NoGeometry);
    if (!search.Where) return request;
    const auto& where = *search.Where;
    const QString value = where.Value.index() == 3
                              ? QgsExpression::quotedString(ToQString(std::get<std::string>(where.Value)))
                              : ToQString(platform::ValueText(where.Value));
    const int field = layer.fields().lookupField(ToQString(where.Field));
    if (field < 0 && platform::EqualNoCase(where.Field, "FID"))
        request.setFilterExpression(QStringLiteral("$id = %1").arg(value));
    else if (field < 0)
        platform::Raise(platform::error_number::kInvalidCall,
                        "The layer \"" + FromQString(layer.name()) + "\" has no field \"" + where.Field + "\".");
    else
        request.setFilterExpression(
            QStringLiteral("%1 = %2").arg(QgsExpression::quotedColumnRef(layer.fields().at(field).name()), value));
    return request;
}

class QgisCursor final : public platform::IFeatureCursor {
public:
    QgisCursor(std::shared_ptr<TableState> state, const QgsFeatureRequest& request)
        : m_state(std::move(state)), m_rows(m_state->Open().getFeatures(request)) {}

    ~QgisCursor() override {
        try {
            m_state->Flush();
        } catch (const platform::RuntimeError&) {
            // A caller that wants to know calls Flush itself.
        }
    }

    std::unique_ptr<platform::IFeature> NextFeature() override {
        QgsFeature feature;
        while (m_rows.nextFeature(feature))
            if (!m_state->ToDelete.contains(feature.id())) return std::make_unique<QgisFeature>(m_state, feature);
        return nullptr;
    }

    void Flush() override { m_state->Flush(); }

private:
    std::shared_ptr<TableState> m_state;
    QgsFeatureIterator m_rows;
};

/// Selected rows by ascending id: providers promise no order for a list of ids, so they are fetched in sorted blocks.
class SelectionCursor final : public platform::IFeatureCursor {
public:
    SelectionCursor(std::shared_ptr<TableState> state, QgsFeatureRequest request)
        : m_state(std::move(state)), m_request(std::move(request)) {
        const QgsFeatureIds& selected = m_state->Open().selectedFeatureIds();
        m_ids.assign(selected.begin(), selected.end());
        std::sort(m_ids.begin(), m_ids.end());
    }

    ~SelectionCursor() override {
        try {
            m_state->Flush();
        } catch (const platform::RuntimeError&) {
            // A caller that wants to know calls Flush itself.
        }
    }

    std::unique_ptr<platform::IFeature> NextFeature() override {
        while (true) {
            if (m_block.empty() && !FetchBlock()) return nullptr;
            while (!m_block.empty()) {
                const QgsFeature feature = m_block.front();
                m_block.pop_front();
                if (!m_state->ToDelete.contains(feature.id())) return std::make_unique<QgisFeature>(m_state, feature);
            }
        }
    }

    void Flush() override { m_state->Flush(); }

private:
    /// False when no ids are left; the block may stay empty when no row of it meets the query.
    bool FetchBlock() {
        if (m_next == m_ids.size()) return false;
        const std::size_t end = std::min(m_ids.size(), m_next + kBlock);
        QgsFeatureIds block;
        for (; m_next < end; ++m_next) block.insert(m_ids[m_next]);
        // A request has one filter only: the ids filter, and the query is tested row by row.
        QgsFeatureRequest request(m_request);
        const std::unique_ptr<QgsExpression> where(
            m_request.filterExpression() ? new QgsExpression(*m_request.filterExpression()) : nullptr);
        request.setFilterFids(block);
        QgsExpressionContext context;
        context.appendScope(new QgsExpressionContextScope());
        context.setFields(m_state->Open().fields());
        if (where) where->prepare(&context);
        QgsFeatureIterator rows = m_state->Open().getFeatures(request);
        QgsFeature feature;
        while (rows.nextFeature(feature)) {
            context.setFeature(feature);
            if (!where || where->evaluate(&context).toBool()) m_block.push_back(feature);
        }
        std::sort(m_block.begin(), m_block.end(),
                  [](const QgsFeature& a, const QgsFeature& b) { return a.id() < b.id(); });
        return true;
    }

    static constexpr std::size_t kBlock = 10000;
    std::shared_ptr<TableState> m_state;
    QgsFeatureRequest m_request;
    std::vector<QgsFeatureId> m_ids;
    std::size_t m_next = 0;
    std::deque<QgsFeature> m_block;
};

class QgisInsertCursor final : public platform::IInsertCursor {
public:
    explicit QgisInsertCursor(std::shared_ptr<TableState> state) : m_state(std::move(state)) {}

    void Insert(const platform::Geometry& shape, std::span<const platform::FieldValue> values) override {
        const QgsFields fields = m_state->Open().fields();
        QgsFeature feature(fields);
        feature.setGeometry(ToQgsGeometry(shape));
        for (std::size_t i = 0; i < values.size() && static_cast<int>(i) < fields.count(); ++i)
            feature.setAttribute(static_cast<int>(i), ToVariant(values[i], fields.at(static_cast<int>(i)).type()));
        m_features.append(feature);
    }

    void Flush() override {
        QgsVectorLayer& layer = m_state->Open();
        QgsFeatureList features = std::exchange(m_features, {});
        if (features.isEmpty()) return;
        const bool stored =
            layer.isEditable() ? layer.addFeatures(features) : layer.dataProvider()->addFeatures(features);
        if (!stored) m_state->Fail("new rows");
        layer.updateExtents();
    }

private:
    std::shared_ptr<TableState> m_state;
    QgsFeatureList m_features;
};

}  // namespace

QgisFeatureClass::QgisFeatureClass(QgsVectorLayer& layer) : m_state(state_of(layer)) {}

platform::ShapeType QgisFeatureClass::Shape() const {
    return ShapeTypeOf(m_state->Open().geometryType());
}

platform::SpatialReference QgisFeatureClass::Reference() const {
    return FromCrs(m_state->Open().crs());
}

platform::Extent QgisFeatureClass::Bounds() const {
    // The cached extent of a layer does not shrink when rows go.
    QgsVectorLayer& layer = m_state->Open();
    layer.updateExtents();
    const QgsRectangle box = layer.extent();
    if (box.isNull() && layer.featureCount() == 0) return {};
    return {box.xMinimum(), box.yMinimum(), box.xMaximum(), box.yMaximum()};
}

std::int64_t QgisFeatureClass::FeatureCount() const {
    const std::int64_t known = m_state->Open().featureCount();
    if (known >= 0) return known - m_state->ToDelete.size();
    std::int64_t count = 0;
    QgsFeature feature;
    auto rows =
        m_state->Open().getFeatures(QgsFeatureRequest().setFlags(QgsFeatureRequest::NoGeometry).setNoAttributes());
    while (rows.nextFeature(feature)) ++count;
    return count;
}

std::unique_ptr<platform::IFeatureCursor> QgisFeatureClass::Find(const platform::Search& search) {
    return std::make_unique<QgisCursor>(m_state, request_of(m_state->Open(), search));
}

std::unique_ptr<platform::IInsertCursor> QgisFeatureClass::Insert() {
    return std::make_unique<QgisInsertCursor>(m_state);
}

std::vector<platform::Field> QgisFeatureClass::Fields() const {
    std::vector<platform::Field> fields;
    for (const QgsField& field : m_state->Open().fields()) fields.push_back(FromQgsField(field));
    return fields;
}

int QgisFeatureClass::FindField(std::string_view name) const {
    return m_state->Open().fields().lookupField(ToQString(name));
}

int QgisFeatureClass::AddField(const platform::Field& field) {
    QgsVectorLayer& layer = m_state->Open();
    const QgsField added = ToQgsField(field);
    const bool done = layer.isEditable() ? layer.addAttribute(added) : layer.dataProvider()->addAttributes({added});
    layer.updateFields();
    const int index = FindField(field.Name);
    if (!done || index < 0)
        platform::Raise(kPermissionDenied, "The field \"" + field.Name + "\" could not be added to the layer \"" +
                                               FromQString(layer.name()) + "\".");
    return index;
}

void QgisFeatureClass::DeleteField(int field) {
    QgsVectorLayer& layer = m_state->Open();
    if (field < 0 || field >= layer.fields().count()) platform::Raise(kSubscript);
    const bool done =
        layer.isEditable() ? layer.deleteAttribute(field) : layer.dataProvider()->deleteAttributes({field});
    layer.updateFields();
    if (!done)
        platform::Raise(kPermissionDenied,
                        "A field of the layer \"" + FromQString(layer.name()) + "\" could not be deleted.");
}

QgisSelectionSet::QgisSelectionSet(QgsVectorLayer& layer) : m_state(state_of(layer)) {}

std::int64_t QgisSelectionSet::Count() const {
    return m_state->Open().selectedFeatureCount();
}

std::unique_ptr<platform::IFeatureCursor> QgisSelectionSet::Find(const platform::Search& search) {
    return std::make_unique<SelectionCursor>(m_state, request_of(m_state->Open(), search));
}

}  // namespace wxl::qgis
