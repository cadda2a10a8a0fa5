// The movement tools on layers that users have dressed up: aliases, computed and joined fields, multipoints.

#include "adapters/gdal/gdal_support.h"
#include "adapters/memory/memory_services.h"
#include "adapters/ogr/disk_services.h"
#include "adapters/qgis/form_presenter.h"
#include "adapters/qgis/qgis_feature_class.h"
#include "adapters/qgis/qgis_map.h"
#include "adapters/qgis/qgis_values.h"
#include "adapters/qgis/qgis_versions.h"
#include "movement/FIndDupTime2.h"
#include "movement/FindDupxy.h"
#include "movement/OVIOBS.h"
#include "platform/runtime_error.h"
#include "tests/contract/vector_files.h"
#include "tests/support/scratch_folder.h"

#include <fstream>
#include <gtest/gtest.h>
#include <qgsproject.h>
#include <qgsvectordataprovider.h>
#include <qgsvectorlayer.h>
#include <qgsvectorlayerjoininfo.h>

namespace wxl::qgis {
namespace {

using namespace platform;

enum class Format { kShapefile, kGeoPackage, kMemory };

struct TestFormat {
    const char* Name;
    Format Kind;
};

using Cells = std::vector<std::string>;

class LayersAsFound : public testing::Test {
protected:
    LayersAsFound() {
        m_services.Messages = &Messages;
        m_services.Dialogs = &m_dialogs;
        m_services.Host = &m_host;
        m_services = m_disk.Complete(m_services);
        Messages.AlwaysAnswer(Topic::kAddFields, Answer::kYes);
    }

    ~LayersAsFound() override { QgsProject::instance()->clear(); }

    /// Puts a layer of one row per time into the project as the highlighted layer, all selected. The fixes lie on a
    /// line, 120 and 180 m apart.
    QgsVectorLayer& Open(Format format, const std::vector<Field>& fields,
                         const std::vector<std::vector<FieldValue>>& rows) {
        const QgsCoordinateReferenceSystem utm(QStringLiteral("EPSG:32632"));
        const FeatureClassDefinition definition{"fixes", ShapeType::kPoint, fields, FromCrs(utm)};
        std::vector<contract::Row> made;
        double x = 500000.0;
        for (const auto& values : rows) {
            made.push_back({Geometry::OfPoint({x, 5800000.0}), values});
            x += made.size() == 1 ? 120.0 : 180.0;
        }
        const auto file = format == Format::kGeoPackage ? contract::WriteGeoPackage(m_folder.Path(), definition, made)
                                                        : contract::WriteShapefile(m_folder.Path(), definition, made);
        auto layer =
            std::make_unique<QgsVectorLayer>(ToQString(file.string()), QStringLiteral("fixes"), QStringLiteral("ogr"));
        if (format == Format::kMemory) layer.reset(layer->materialize(QgsFeatureRequest()));
        return Highlight(std::move(layer));
    }

    /// The same of a multipoint layer with Time2, one text of a shape each.
    QgsVectorLayer& OpenMultiPoints(const std::vector<const char*>& shapes) {
        auto layer = std::make_unique<QgsVectorLayer>(QStringLiteral("MultiPoint?crs=EPSG:32632&field=Time2:integer"),
                                                      QStringLiteral("fixes"), QStringLiteral("memory"));
        int time = 0;
        for (const char* shape : shapes) {
            QgsFeature feature(layer->fields());
            feature.setGeometry(QgsGeometry::fromWkt(QLatin1String(shape)));
            feature.setAttribute(0, time += 60);
            EXPECT_TRUE(layer->dataProvider()->addFeature(feature));
        }
        return Highlight(std::move(layer));
    }

    template <class Tool>
    void Run() {
        Tool tool(m_services, m_presenter);
        tool.OnCreate(m_application);
        tool.OnClick();
    }

    /// The values of a field, in the order of the rows.
    Cells ValuesOf(const char* name) const {
        Cells cells;
        const int field = Layer->fields().indexOf(QLatin1String(name));
        if (field < 0) return {"no field " + std::string(name)};
        QgsFeature row;
        auto rows = Layer->getFeatures();
        while (rows.nextFeature(row)) cells.push_back(ValueText(FromVariant(row.attribute(field))));
        return cells;
    }

    void SetAlias(const char* name, const char* alias) {
        Layer->setFieldAlias(Layer->fields().indexOf(QLatin1String(name)), QLatin1String(alias));
    }

    memory::MemoryMessages Messages;
    QgsVectorLayer* Layer = nullptr;

private:
    QgsVectorLayer& Highlight(std::unique_ptr<QgsVectorLayer> layer) {
        EXPECT_TRUE(layer->isValid());
        Layer = layer.release();
        QgsProject::instance()->addMapLayer(Layer);
        Layer->selectAll();
        return *Layer;
    }

    tests::ScratchFolder m_folder;
    QgisHost m_host{{}};
    files::DiskServices m_disk;
    memory::MemoryFileDialogs m_dialogs;
    platform::Services m_services;
    QgisFormPresenter m_presenter{m_host, nullptr, Desktop{}};
    std::shared_ptr<IApplication> m_application =
        std::make_shared<QgisApplication>(Desktop{nullptr, nullptr, [this] { return Layer; }});
};

class LayersOfEachFormat : public LayersAsFound, public testing::WithParamInterface<TestFormat> {};

const Field kTime2{.Name = "Time2", .Type = FieldType::kInteger};

std::vector<std::vector<FieldValue>> three_times() {
    return {{std::int64_t{60}}, {std::int64_t{120}}, {std::int64_t{180}}};
}

TEST_P(LayersOfEachFormat, An_alias_is_no_name_of_a_result_field) {
    Open(GetParam().Kind, {kTime2, {.Name = "km", .Type = FieldType::kDouble}},
         {{std::int64_t{60}, 7.5}, {std::int64_t{120}, 8.5}, {std::int64_t{180}, 9.5}});
    SetAlias("km", "Dist");
    Run<movement::OVIOBS>();
    EXPECT_EQ(ValuesOf("km"), (Cells{"7.5", "8.5", "9.5"}));
    EXPECT_EQ(ValuesOf("Dist"), (Cells{"", "120", "180"}));
}

TEST_P(LayersOfEachFormat, An_alias_is_no_Time2_field) {
    QgsVectorLayer& layer = Open(GetParam().Kind, {{.Name = "day", .Type = FieldType::kInteger}},
                                 {{std::int64_t{1}}, {std::int64_t{1}}, {std::int64_t{1}}});
    SetAlias("day", "TIME2");
    Run<movement::FIndDupTime2>();
    EXPECT_EQ(Messages.Texts(), (Cells{"You must select points layer with a Time2 field"}));
    EXPECT_EQ(layer.featureCount(), 3);
}

TEST_P(LayersOfEachFormat, A_query_names_fields_and_no_aliases) {
    QgsVectorLayer& layer = Open(GetParam().Kind, {kTime2}, three_times());
    SetAlias("Time2", "when");
    QgisFeatureClass features(layer);
    EXPECT_GE(features.FindField("TIME2"), 0);
    EXPECT_EQ(features.FindField("when"), -1);
    EXPECT_NE(features.Find({.Where = AttributeQuery{"TIME2 = 60", "TIME2", std::int64_t{60}}})->NextFeature(),
              nullptr);
    EXPECT_THROW(features.Find({.Where = AttributeQuery{"when = 60", "when", std::int64_t{60}}}), RuntimeError);
}

TEST_P(LayersOfEachFormat, The_very_name_goes_before_one_of_another_case) {
    QgsVectorLayer& layer = Open(GetParam().Kind, {kTime2}, three_times());
    layer.addExpressionField(QStringLiteral("1"), make_field(QStringLiteral("TIME2"), QMetaType::Int));
    QgisFeatureClass features(layer);
    EXPECT_EQ(features.FindField("TIME2"), layer.fields().count() - 1);
    EXPECT_EQ(features.FindField("Time2"), layer.fields().count() - 2);
    EXPECT_EQ(features.FindField("tIME2"), layer.fields().count() - 2);
}

TEST_P(LayersOfEachFormat, A_computed_field_takes_no_results) {
    QgsVectorLayer& layer = Open(GetParam().Kind, {kTime2}, three_times());
    layer.addExpressionField(QStringLiteral("7"), make_field(QStringLiteral("Dist"), QMetaType::Double));
    Run<movement::OVIOBS>();
    EXPECT_EQ(Messages.Last().Text, "CalcFeatures sub Error number: 70");
    EXPECT_EQ(ValuesOf("Dist"), (Cells{"7", "7", "7"}));
    EXPECT_EQ(ValuesOf("T_Cumul"), (Cells{"0", "", ""})) << "the first row was filled";
}

TEST_P(LayersOfEachFormat, A_joined_field_takes_no_results) {
    QgsVectorLayer& layer = Open(GetParam().Kind, {kTime2}, three_times());
    auto* other = new QgsVectorLayer(QStringLiteral("NoGeometry?field=when:integer&field=Dist:double"),
                                     QStringLiteral("other"), QStringLiteral("memory"));
    QgsFeature row(other->fields());
    row.setAttributes({60, 7.5});
    ASSERT_TRUE(other->dataProvider()->addFeature(row));
    QgsProject::instance()->addMapLayer(other);
    QgsVectorLayerJoinInfo join;
    join.setJoinLayer(other);
    join.setJoinFieldName(QStringLiteral("when"));
    join.setTargetFieldName(QStringLiteral("Time2"));
    join.setPrefix(QStringLiteral(""));
    ASSERT_TRUE(layer.addJoin(join));
    Run<movement::OVIOBS>();
    EXPECT_EQ(Messages.Last().Text, "CalcFeatures sub Error number: 70");
    QgsFeature after;
    ASSERT_TRUE(other->getFeatures().nextFeature(after));
    EXPECT_EQ(after.attribute(QStringLiteral("Dist")), QVariant(7.5));
}

TEST_P(LayersOfEachFormat, A_refused_value_names_its_field) {
    QgsVectorLayer& layer = Open(GetParam().Kind, {kTime2}, three_times());
    layer.addExpressionField(QStringLiteral("7"), make_field(QStringLiteral("Dist"), QMetaType::Double));
    QgisFeatureClass features(layer);
    const int field = features.FindField("Dist");
    const auto expect_refusal = [](auto&& action) {
        try {
            action();
            FAIL() << "nothing was refused";
        } catch (const RuntimeError& error) {
            EXPECT_EQ(error.Number, error_number::kPermissionDenied);
            EXPECT_STREQ(error.what(),
                         "The field \"Dist\" of the layer \"fixes\" is computed or joined, so that nothing can be "
                         "stored in it. Please remove it from the layer or give it another name and try again.");
        }
    };
    expect_refusal([&] { features.Find({})->NextFeature()->SetValue(field, 1.0); });
    expect_refusal([&] { features.DeleteField(field); });
}

TEST_P(LayersOfEachFormat, Results_go_into_stored_fields_beside_computed_ones) {
    QgsVectorLayer& layer = Open(GetParam().Kind, {kTime2}, three_times());
    layer.addExpressionField(QStringLiteral("7"), make_field(QStringLiteral("seven"), QMetaType::Double));
    Run<movement::OVIOBS>();
    EXPECT_EQ(Messages.Boxes().size(), 1U) << "the question";
    EXPECT_EQ(ValuesOf("Dist"), (Cells{"", "120", "180"}));
    EXPECT_EQ(ValuesOf("seven"), (Cells{"7", "7", "7"}));
}

TEST_F(LayersAsFound, A_selection_keeps_the_layers_order_where_ids_do_not_rise) {
    const tests::ScratchFolder folder;
    std::ofstream(folder / "wolves.geojson")
        << R"({"type":"FeatureCollection","features":[)"
           R"({"type":"Feature","properties":{"id":9},"geometry":{"type":"Point","coordinates":[1,10]}},)"
           R"({"type":"Feature","properties":{"id":4},"geometry":{"type":"Point","coordinates":[2,10]}},)"
           R"({"type":"Feature","properties":{"id":7},"geometry":{"type":"Point","coordinates":[3,10]}},)"
           R"({"type":"Feature","properties":{"id":1},"geometry":{"type":"Point","coordinates":[4,10]}}]})";
    QgsVectorLayer layer(ToQString((folder / "wolves.geojson").string()), QStringLiteral("wolves"),
                         QStringLiteral("ogr"));
    ASSERT_TRUE(layer.isValid());
    layer.selectByIds({1, 7, 9});
    QgisSelectionSet selection(layer);
    EXPECT_EQ(selection.Count(), 3);
    std::vector<double> places;
    const auto cursor = selection.Find({});
    while (const auto fix = cursor->NextFeature()) places.push_back(fix->Shape().Location.X);
    EXPECT_EQ(places, (std::vector<double>{1.0, 3.0, 4.0}));
}

TEST_F(LayersAsFound, The_rows_of_a_geopackage_are_counted) {
    QgsVectorLayer& made = Open(Format::kGeoPackage, {kTime2}, three_times());
    const QString path = made.source().section(QLatin1Char('|'), 0, 0);
    QgsProject::instance()->clear();
    const files::GdalDatasetPtr database(GDALDataset::Open(path.toUtf8().constData(), GDAL_OF_VECTOR | GDAL_OF_UPDATE));
    database->ReleaseResultSet(
        database->ExecuteSQL("UPDATE gpkg_ogr_contents SET feature_count = 1000", nullptr, nullptr));
    QgsVectorLayer layer(path, QStringLiteral("fixes"), QStringLiteral("ogr"));
    ASSERT_TRUE(layer.isValid());
    EXPECT_EQ(QgisFeatureClass(layer).FeatureCount(), 3);
}

/// What another program does to a database.
void change(const QString& path, const std::vector<const char*>& statements) {
    const files::GdalDatasetPtr database(GDALDataset::Open(path.toUtf8().constData(), GDAL_OF_VECTOR | GDAL_OF_UPDATE));
    for (const char* sql : statements) database->ReleaseResultSet(database->ExecuteSQL(sql, nullptr, nullptr));
}

/// What reading these rows ends in.
std::string trouble_of(IFeatureCursor& cursor) {
    try {
        while (const auto row = cursor.NextFeature()) row->Shape();
    } catch (const RuntimeError& error) {
        return error.Description;
    }
    return "";
}

TEST_F(LayersAsFound, A_selected_row_that_cannot_be_read_is_an_error_and_no_row_less) {
    const QString path = Open(Format::kGeoPackage, {kTime2}, three_times()).source().section(QLatin1Char('|'), 0, 0);
    QgsProject::instance()->clear();
    change(path, {"DROP TRIGGER IF EXISTS rtree_fixes_geom_update1", "DROP TRIGGER IF EXISTS rtree_fixes_geom_update3",
                  "DROP TRIGGER IF EXISTS rtree_fixes_geom_update6", "DROP TRIGGER IF EXISTS rtree_fixes_geom_update7",
                  "UPDATE fixes SET geom = x'4750' WHERE fid = 2"});
    QgsVectorLayer layer(path, QStringLiteral("fixes"), QStringLiteral("ogr"));
    ASSERT_TRUE(layer.isValid());
    const std::string told =
        "The row 2 of the layer \"fixes\" could not be read (Unable to read geometry). Please correct it or take it "
        "out of the layer and try again.";
    EXPECT_EQ(trouble_of(*QgisFeatureClass(layer).Find({})), told);
    layer.selectByIds({1, 2});
    QgisSelectionSet selection(layer);
    EXPECT_EQ(trouble_of(*selection.Find({})), told);
    layer.selectByIds({1, 3});
    EXPECT_EQ(trouble_of(*selection.Find({})), "");
}

TEST_F(LayersAsFound, A_selected_row_that_is_not_there_any_more_is_an_error) {
    const QString path = Open(Format::kGeoPackage, {kTime2}, three_times()).source().section(QLatin1Char('|'), 0, 0);
    QgsProject::instance()->clear();
    QgsVectorLayer layer(path, QStringLiteral("fixes"), QStringLiteral("ogr"));
    layer.selectAll();
    change(path, {"DELETE FROM fixes WHERE fid = 3"});
    QgisSelectionSet selection(layer);
    EXPECT_EQ(trouble_of(*selection.Find({})),
              "The selected row 3 of the layer \"fixes\" could not be read. Please correct it or take it out of the "
              "layer and try again.");
}

TEST_F(LayersAsFound, A_selected_row_that_a_filter_hides_is_left_out) {
    QgsVectorLayer& layer = Open(Format::kShapefile, {kTime2}, three_times());
    layer.selectAll();
    ASSERT_TRUE(layer.setSubsetString(QStringLiteral("\"Time2\" > 60")));
    layer.selectByIds({0, 1, 2});
    QgisSelectionSet selection(layer);
    EXPECT_EQ(trouble_of(*selection.Find({})), "");
}

INSTANTIATE_TEST_SUITE_P(Layers, LayersOfEachFormat,
                         testing::Values(TestFormat{"Shapefile", Format::kShapefile},
                                         TestFormat{"GeoPackage", Format::kGeoPackage},
                                         TestFormat{"Memory", Format::kMemory}),
                         [](const auto& each) { return std::string(each.param.Name); });

// Multipoints

TEST_F(LayersAsFound, Multipoints_of_one_point_are_points) {
    OpenMultiPoints({"MultiPoint((500000 5800000))", "MultiPoint((500120 5800000))", "MultiPoint((500120 5800000))"});
    Run<movement::OVIOBS>();
    EXPECT_EQ(ValuesOf("Dist"), (Cells{"", "120", "0"}));
    Run<movement::FindDupxy>();
    EXPECT_EQ(Messages.Last().Text, "Deleted 1 duplicate features");
    EXPECT_EQ(Layer->featureCount(), 2);
}

TEST_F(LayersAsFound, A_feature_of_several_points_gets_no_movement_fields) {
    OpenMultiPoints({"MultiPoint((500000 5800000))", "MultiPoint((500120 5800000),(500300 5800000))"});
    Run<movement::OVIOBS>();
    EXPECT_EQ(Messages.Last().Text, "CalcFeatures sub Error number: 5");
    EXPECT_EQ(ValuesOf("Dist"), (Cells{"", ""}));
}

TEST_F(LayersAsFound, A_feature_of_several_points_is_no_duplicate) {
    OpenMultiPoints({"MultiPoint((500000 5800000))", "MultiPoint((500000 5800000),(500300 5800000))"});
    Run<movement::FindDupxy>();
    EXPECT_EQ(Messages.Last().Text, "Calcfeatures sub Error number: 5");
    EXPECT_EQ(Layer->featureCount(), 2);
}

TEST_F(LayersAsFound, A_feature_of_several_points_has_no_shape) {
    QgisFeatureClass features(OpenMultiPoints({"MultiPoint((500000 5800000),(500000 5800000))"}));
    const auto row = features.Find({})->NextFeature();
    try {
        row->Shape();
        FAIL() << "a shape of several points";
    } catch (const RuntimeError& error) {
        EXPECT_EQ(error.Number, error_number::kInvalidCall);
        EXPECT_STREQ(error.what(), "A feature of several points cannot be used.");
    }
}

}  // namespace
}  // namespace wxl::qgis
