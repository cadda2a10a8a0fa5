#include "adapters/qgis/qgis_feature_class.h"

#include "adapters/ogr/stored_name.h"
#include "adapters/qgis/layer_files.h"
#include "adapters/qgis/layer_rows.h"
#include "adapters/qgis/qgis_values.h"
#include "adapters/qgis/table_pass.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <deque>
#include <map>
#include <qgsexpression.h>
#include <qgsfeaturerequest.h>
#include <qgsproviderregistry.h>
#include <qgsvectordataprovider.h>
#include <qgsvectorlayer.h>
#include <QPointer>
#include <span>

namespace wxl::qgis {

using platform::error_number::kSubscript;

namespace {

bool IsGone(QgsVectorLayer& layer, QgsFeatureId id) {
    const auto pass = TablePass::Running(layer);
    return pass && pass->IsGone(id);
}

class QgisFeature final : public platform::IFeature {
public:
    QgisFeature(std::shared_ptr<TablePass> pass, const QgsFeature& feature)
        : m_pass(std::move(pass)), m_feature(feature) {}

    std::int64_t OID() const override { return m_feature.id(); }
    platform::Geometry Shape() const override { return FromQgsGeometry(m_feature.geometry()); }

    platform::FieldValue Value(int field) const override {
        CheckField(field);
        return FromVariant(m_feature.attribute(field));
    }

    void SetValue(int field, const platform::FieldValue& value) override {
        CheckField(field);
        const int stored = stored_field(m_pass->Open(), field);
        const QgsField column = m_pass->Open().fields().at(field);
        const platform::FieldValue held = platform::ValueForColumn(value, FromQgsField(column).Type);
        m_pass->Check(stored, held);
        const QVariant changed = ToVariant(held, type_of(column));
        m_feature.setAttribute(field, changed);
        m_changed[stored] = changed;
    }

    void Store() override {
        CheckStands();
        m_pass->Store(m_feature.id(), std::exchange(m_changed, {}));
    }

    void Delete() override {
        CheckStands();
        m_pass->Delete(m_feature.id());
    }

private:
    void CheckStands() const {
        if (m_pass->IsGone(m_feature.id()))
            platform::Raise(platform::error_number::kInvalidCall, "The row was deleted.");
    }

    void CheckField(int field) const {
        if (field < 0 || field >= m_feature.attributeCount()) platform::Raise(kSubscript);
    }

    std::shared_ptr<TablePass> m_pass;
    QgsFeature m_feature;
    QgsAttributeMap m_changed;
};

QgsFeatureRequest request_of(const QgsVectorLayer& layer, const platform::Search& search) {
    QgsFeatureRequest request;
    if (!search.WithShape) request.setFlags(kRequestNoGeometry);
    if (!search.Where) return request;
    const auto& where = *search.Where;
    const QString value = where.Value.index() == 3
                              ? QgsExpression::quotedString(ToQString(std::get<std::string>(where.Value)))
                              : ToQString(platform::ValueText(where.Value));
    const int field = field_named(layer.fields(), where.Field);
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

/// Asks for the rows of these ids (ascending), and perhaps for others between them. A list of ids costs a GeoPackage
/// one query for each row, a range of its key costs one for all; ids far apart would read too many others.
void ask_for_rows(const QgsVectorLayer& layer, std::span<const QgsFeatureId> ids, QgsFeatureRequest& request) {
    const QgsAttributeList keys = layer.primaryKeyAttributes();
    const auto span = static_cast<std::uint64_t>(ids.back()) - static_cast<std::uint64_t>(ids.front());
    if (layer.isEditable() || layer.storageType() != QLatin1String("GPKG") || keys.size() != 1 ||
        span / 4 > ids.size()) {
        request.setFilterFids(QgsFeatureIds(ids.begin(), ids.end()));
        return;
    }
    request.setFilterExpression(QStringLiteral("%1 >= %2 AND %1 <= %3")
                                    .arg(QgsExpression::quotedColumnRef(layer.fields().at(keys.front()).name()),
                                         QString::number(ids.front()), QString::number(ids.back())));
}

class QgisCursor final : public platform::IFeatureCursor {
public:
    QgisCursor(std::shared_ptr<TablePass> pass, const QgsFeatureRequest& request)
        : m_pass(std::move(pass)), m_rows(m_pass->Open(), request) {}

    ~QgisCursor() override {
        try {
            m_pass->Flush();
        } catch (const platform::RuntimeError&) {
            // A caller that wants to know calls Flush itself.
        }
    }

    std::unique_ptr<platform::IFeature> NextFeature() override {
        QgsFeature feature;
        while (m_rows.Next(feature))
            if (!m_pass->IsGone(feature.id())) return std::make_unique<QgisFeature>(m_pass, feature);
        return nullptr;
    }

    void Flush() override { m_pass->Flush(); }

private:
    std::shared_ptr<TablePass> m_pass;
    LayerRows m_rows;
};

/// Throws for the first of the selected rows that QGIS did not give; a filter of the layer may hide some.
void require_all(const QgsVectorLayer& layer, std::span<const QgsFeatureId> wanted, const QgsFeatureIds& given,
                 const TablePass& pass) {
    if (!layer.subsetString().isEmpty()) return;
    for (const QgsFeatureId id : wanted)
        if (!given.contains(id) && !pass.IsGone(id))
            raise_unread(QStringLiteral("The selected row %1").arg(id), layer.name(), {});
}

/// Selected rows in the order of a layer whose ids do not rise in it.
class SelectionInOrder final : public platform::IFeatureCursor {
public:
    SelectionInOrder(std::shared_ptr<TablePass> pass, const QgsFeatureRequest& request)
        : m_pass(pass),
          m_selected(pass->Open().selectedFeatureIds()),
          m_givesAll(request.filterExpression() == nullptr),
          m_all(std::move(pass), request) {}

    std::unique_ptr<platform::IFeature> NextFeature() override {
        while (auto feature = m_all.NextFeature()) {
            if (!m_selected.contains(feature->OID())) continue;
            m_given.insert(feature->OID());
            return feature;
        }
        const std::vector<QgsFeatureId> wanted(m_selected.begin(), m_selected.end());
        if (m_givesAll) require_all(m_pass->Open(), wanted, m_given, *m_pass);
        return nullptr;
    }

    void Flush() override { m_all.Flush(); }

private:
    std::shared_ptr<TablePass> m_pass;
    QgsFeatureIds m_selected;
    QgsFeatureIds m_given;
    bool m_givesAll;  ///< no query leaves rows out
    QgisCursor m_all;
};

/// Selected rows of a layer whose ids rise: providers promise no order for a list of ids, so they are fetched in sorted
/// blocks, which spares the rows between.
class SelectionCursor final : public platform::IFeatureCursor {
public:
    SelectionCursor(std::shared_ptr<TablePass> pass, const QgsFeatureRequest& request)
        : m_pass(std::move(pass)), m_request(request) {
        const QgsFeatureIds& selected = m_pass->Open().selectedFeatureIds();
        m_ids.assign(selected.begin(), selected.end());
        std::sort(m_ids.begin(), m_ids.end());
    }

    ~SelectionCursor() override {
        try {
            m_pass->Flush();
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
                if (!m_pass->IsGone(feature.id())) return std::make_unique<QgisFeature>(m_pass, feature);
            }
        }
    }

    void Flush() override { m_pass->Flush(); }

private:
    /// False when no ids are left; the block may stay empty when no row of it meets the query.
    bool FetchBlock() {
        if (m_next == m_ids.size()) return false;
        const std::size_t end = std::min(m_ids.size(), m_next + kBlock);
        const std::span<const QgsFeatureId> block(m_ids.data() + m_next, end - m_next);
        m_next = end;
        // A request has one filter only: the ids filter, and the query is tested row by row.
        QgsFeatureRequest request(m_request);
        const std::unique_ptr<QgsExpression> where(
            m_request.filterExpression() ? new QgsExpression(*m_request.filterExpression()) : nullptr);
        ask_for_rows(m_pass->Open(), block, request);
        QgsExpressionContext context;
        context.appendScope(new QgsExpressionContextScope());
        context.setFields(m_pass->Open().fields());
        if (where) where->prepare(&context);
        LayerRows rows(m_pass->Open(), request, block);
        QgsFeatureIds given;
        QgsFeature feature;
        while (rows.Next(feature)) {
            given.insert(feature.id());
            context.setFeature(feature);
            if (!where || where->evaluate(&context).toBool()) m_block.push_back(feature);
        }
        require_all(m_pass->Open(), block, given, *m_pass);
        std::sort(m_block.begin(), m_block.end(),
                  [](const QgsFeature& a, const QgsFeature& b) { return a.id() < b.id(); });
        return true;
    }

    static constexpr std::size_t kBlock = 10000;
    std::shared_ptr<TablePass> m_pass;
    QgsFeatureRequest m_request;
    std::vector<QgsFeatureId> m_ids;
    std::size_t m_next = 0;
    std::deque<QgsFeature> m_block;
};

class QgisInsertCursor final : public platform::IInsertCursor {
public:
    explicit QgisInsertCursor(std::shared_ptr<TablePass> pass) : m_pass(std::move(pass)) {}

    void Insert(const platform::Geometry& shape, std::span<const platform::FieldValue> values) override {
        QgsVectorLayer& layer = m_pass->Open();
        if (!shape.IsNull() && shape.Type != ShapeTypeOf(layer.geometryType()))
            platform::Raise(platform::error_number::kInvalidCall, "The layer holds shapes of another type.");
        files::NewRow row{shape, {}};
        for (std::size_t i = 0; i < values.size() && static_cast<int>(i) < layer.fields().count(); ++i)
            row.Values.push_back(
                platform::ValueForColumn(values[i], FromQgsField(layer.fields().at(static_cast<int>(i))).Type));
        m_rows.push_back(std::move(row));
    }

    void Flush() override {
        if (m_rows.empty()) return;
        for (files::NewRow& row : std::exchange(m_rows, {})) m_pass->Insert(std::move(row));
        m_pass->Flush();
    }

private:
    std::shared_ptr<TablePass> m_pass;
    std::vector<files::NewRow> m_rows;
};

}  // namespace

QgisFeatureClass::QgisFeatureClass(QgsVectorLayer& layer) : m_layer(&layer) {}

platform::ShapeType QgisFeatureClass::Shape() const {
    return ShapeTypeOf(open_layer(m_layer).geometryType());
}

platform::SpatialReference QgisFeatureClass::Reference() const {
    const QgsVectorLayer& layer = open_layer(m_layer);
    platform::SpatialReference reference = FromCrs(layer.crs());
    const QgsVectorDataProvider* provider = layer.dataProvider();
    // A system that the user gave the layer in QGIS has its name there.
    if (provider == nullptr || provider->storageType() != QLatin1String("ESRI Shapefile") ||
        provider->crs() != layer.crs())
        return reference;
    const QString file = QgsProviderRegistry::instance()
                             ->decodeUri(layer.providerType(), provider->dataSourceUri())
                             .value(QStringLiteral("path"))
                             .toString();
    return files::NamedAsStored(reference, FromQString(file));
}

platform::Extent QgisFeatureClass::Bounds() const {
    // Row by row: the cached extent of a layer does not shrink when rows go, and knows no rows without a shape.
    platform::Extent bounds;
    QgsFeature feature;
    LayerRows rows(open_layer(m_layer), QgsFeatureRequest().setNoAttributes());
    while (rows.Next(feature)) {
        if (IsGone(open_layer(m_layer), feature.id()) || feature.geometry().isEmpty()) continue;
        const QgsRectangle box = feature.geometry().boundingBox();
        bounds.Include({box.xMinimum(), box.yMinimum()});
        bounds.Include({box.xMaximum(), box.yMaximum()});
    }
    return bounds;
}

std::int64_t QgisFeatureClass::FeatureCount() const {
    // Some providers do not know their count, one in the middle of deletions counts rows that are gone, and a
    // GeoPackage tells what some program once recorded in it.
    const std::int64_t known = open_layer(m_layer).featureCount();
    const bool recorded = open_layer(m_layer).storageType() == QLatin1String("GPKG");
    if (known >= 0 && !recorded && !TablePass::Running(open_layer(m_layer))) return known;
    std::int64_t count = 0;
    QgsFeature feature;
    LayerRows rows(open_layer(m_layer), QgsFeatureRequest().setFlags(kRequestNoGeometry).setNoAttributes());
    while (rows.Next(feature)) count += IsGone(open_layer(m_layer), feature.id()) ? 0 : 1;
    return count;
}

std::unique_ptr<platform::IFeatureCursor> QgisFeatureClass::Find(const platform::Search& search) {
    return std::make_unique<QgisCursor>(TablePass::Join(open_layer(m_layer)), request_of(open_layer(m_layer), search));
}

std::unique_ptr<platform::IInsertCursor> QgisFeatureClass::Insert() {
    return std::make_unique<QgisInsertCursor>(TablePass::Join(open_layer(m_layer)));
}

std::vector<platform::Field> QgisFeatureClass::Fields() const {
    std::vector<platform::Field> fields;
    for (const QgsField& field : open_layer(m_layer).fields()) fields.push_back(FromQgsField(field));
    return fields;
}

int QgisFeatureClass::FindField(std::string_view name) const {
    return field_named(open_layer(m_layer).fields(), name);
}

int QgisFeatureClass::AddField(const platform::Field& field) {
    QgsVectorLayer& layer = open_layer(m_layer);
    if (field.Name.empty()) platform::Raise(platform::error_number::kInvalidCall, "A field needs a name.");
    if (FindField(field.Name) >= 0)
        platform::Raise(platform::error_number::kInvalidCall,
                        "The layer \"" + FromQString(layer.name()) + "\" has a field \"" + field.Name + "\" already.");
    return TablePass::Join(layer)->AddField(field);
}

void QgisFeatureClass::DeleteField(int field) {
    QgsVectorLayer& layer = open_layer(m_layer);
    if (field < 0 || field >= layer.fields().count()) platform::Raise(kSubscript);
    TablePass::Join(layer)->DeleteField(field);
}

QgisSelectionSet::QgisSelectionSet(QgsVectorLayer& layer) : m_layer(&layer) {}

std::int64_t QgisSelectionSet::Count() const {
    const QgsFeatureIds& selected = open_layer(m_layer).selectedFeatureIds();
    return std::count_if(selected.begin(), selected.end(),
                         [&](QgsFeatureId id) { return !IsGone(open_layer(m_layer), id); });
}

std::unique_ptr<platform::IFeatureCursor> QgisSelectionSet::Find(const platform::Search& search) {
    QgsVectorLayer& layer = open_layer(m_layer);
    if (!ids_rise(layer)) return std::make_unique<SelectionInOrder>(TablePass::Join(layer), request_of(layer, search));
    return std::make_unique<SelectionCursor>(TablePass::Join(layer), request_of(layer, search));
}

}  // namespace wxl::qgis
