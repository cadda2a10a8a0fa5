#include "movement/duplicate_index.h"
#include "movement/FIndDupTime2.h"
#include "movement/FindDupxy.h"
#include "tests/unit/movement/literal_duplicates.h"
#include "tests/unit/movement/movement_desk.h"

#include <random>

namespace wxl::tests {
namespace {

using movement::FIndDupTime2;
using movement::FindDupxy;
using movement::xy_tolerance;
using namespace platform;

const Field kTime2{.Name = "Time2", .Type = FieldType::kDouble};
const FieldValue kMissing;
using Oids = std::vector<std::int64_t>;

class Duplicates : public MovementDesk {
protected:
    Duplicates() {
        ByTime.OnCreate(Application);
        ByPlace.OnCreate(Application);
    }

    /// Rows with these object IDs and times, one metre apart, all selected.
    memory::MemoryFeatureClass& AddTimes(const std::vector<std::pair<std::int64_t, FieldValue>>& times) {
        auto& table = AddLayer({kTime2});
        for (const auto& [oid, time] : times) {
            table.SetNextOID(oid);
            table.AddPoint(static_cast<double>(oid), 0.0, {time});
        }
        Layer->SelectAll();
        return table;
    }

    /// Rows with object IDs from 0 at these places, all selected.
    memory::MemoryFeatureClass& AddPlaces(const std::vector<Point>& places,
                                          const SpatialReference& reference = utm15()) {
        auto& table = AddLayer({}, reference);
        for (const Point& place : places) table.AddPoint(place.X, place.Y);
        Layer->SelectAll();
        return table;
    }

    FIndDupTime2 ByTime{Services, PleaseWait};
    FindDupxy ByPlace{Services, PleaseWait};
};

TEST_F(Duplicates, Of_equal_times_the_lowest_object_id_stays) {
    auto& table = AddTimes({{4, 100.0}, {7, 100.0}, {9, 100.0}});
    ByTime.OnClick();
    EXPECT_EQ(table.OIDs(), Oids{4});
    EXPECT_EQ(Messages.Texts(), Texts{"Deleted 2 duplicate features"});
    EXPECT_EQ(Messages.Last().Title, "");
    EXPECT_EQ(Application->Doc().Redraws(), 1);
    EXPECT_EQ(PleaseWait.Form, nullptr);
}

TEST_F(Duplicates, The_lowest_object_id_stays_whatever_the_order_of_the_cursor) {
    auto& table = AddTimes({{4, 100.0}, {7, 100.0}, {9, 100.0}});
    ByTime.CalcFeatures(std::make_unique<RowsInOrder>(table, Oids{9, 7, 4}), Layer->Selection());
    EXPECT_EQ(table.OIDs(), Oids{4});
    EXPECT_EQ(Messages.Texts(), Texts{"Deleted 2 duplicate features"});
}

TEST_F(Duplicates, Unselected_fixes_are_neither_compared_nor_deleted) {
    auto& table = AddTimes({{0, 100.0}, {1, 100.0}, {2, 50.0}});
    Layer->Select({1, 2});
    ByTime.OnClick();
    EXPECT_EQ(table.OIDs(), (Oids{0, 1, 2}));
    EXPECT_EQ(Messages.Texts(), Texts{"Deleted 0 duplicate features"});
}

TEST_F(Duplicates, Fixes_of_different_animals_are_no_duplicates_when_animals_are_told_apart) {
    auto& table = AddLayer({kTime2, {.Name = "animal", .Type = FieldType::kDouble}});
    // Rows 0 and 2 are animal 1, rows 1, 3 and 6 animal 2, rows 4 and 5 nobody's; all at one place and time.
    for (const FieldValue& animal : std::vector<FieldValue>{1.0, 2.0, 1.0, 2.0, kMissing, kMissing, 2.0})
        table.AddPoint(0, 0, {100.0, animal});
    Layer->SelectAll();
    ByTime.SetAnimalField("ANIMAL");
    ByTime.OnClick();
    EXPECT_EQ(table.OIDs(), (Oids{0, 1, 4, 5}));
    EXPECT_EQ(Messages.Texts(), Texts{"Deleted 3 duplicate features"});
    ByPlace.OnClick();
    EXPECT_EQ(table.OIDs(), (Oids{0}));
}

TEST_F(Duplicates, Places_of_different_animals_are_no_duplicates_when_animals_are_told_apart) {
    auto& table = AddLayer({{.Name = "animal", .Type = FieldType::kText}});
    for (const char* animal : {"a", "b", "b", "", "a", ""}) table.AddPoint(3, 4, {animal});
    Layer->SelectAll();
    ByPlace.SetAnimalField("animal");
    ByPlace.OnClick();
    EXPECT_EQ(table.OIDs(), (Oids{0, 1, 3, 5}));
}

TEST_F(Duplicates, Times_are_compared_after_rounding_half_to_even) {
    auto& table = AddTimes({{0, 1.5}, {1, 2.0}, {2, 2.5}, {3, 3.5}, {4, 4.0}, {5, 2.51}});
    ByTime.OnClick();
    EXPECT_EQ(table.OIDs(), (Oids{0, 3, 5}));
}

TEST_F(Duplicates, Nothing_selected) {
    AddTimes({{0, 1.0}});
    Layer->Select({});
    ByTime.OnClick();
    ByPlace.OnClick();
    const std::string text =
        "You must select/highlight some points in the map to test. No points were tested or removed!!";
    EXPECT_EQ(Messages.Texts(), (Texts{text, text}));
    for (const MessageBox& box : Messages.Boxes()) EXPECT_EQ(box.Title, "");
    EXPECT_EQ(PleaseWait.Shown, 0);
    EXPECT_EQ(Application->Doc().Redraws(), 0);
}

TEST_F(Duplicates, No_layer_or_a_wrong_one) {
    ByTime.OnClick();
    ByPlace.OnClick();
    AddLayer({kTime2}, utm15(), ShapeType::kPolyline);
    ByTime.OnClick();
    ByPlace.OnClick();
    AddLayer({});
    ByTime.OnClick();
    EXPECT_EQ(Messages.Texts(),
              (Texts{"Please select points layer", "Please select a points layer with some points selected.",
                     "You must select points layer with a Time2 field", "You must select a points layer",
                     "You must select points layer with a Time2 field"}));
    for (const MessageBox& box : Messages.Boxes()) EXPECT_EQ(box.Title, "");
}

TEST_F(Duplicates, A_read_only_layer_is_told_before_anything_is_touched) {
    auto& table = AddTimes({{0, 1.0}, {1, 1.0}});
    Layer->SetWhyReadOnly("The file is read-only.");
    ByTime.OnClick();
    ByPlace.OnClick();
    EXPECT_EQ(Messages.Texts(), (Texts{"The file is read-only.", "The file is read-only."}));
    EXPECT_EQ(table.OIDs(), (Oids{0, 1}));
}

TEST_F(Duplicates, An_object_id_beyond_16_bits_ends_the_pass_and_earlier_deletions_stay) {
    auto& table = AddTimes({{5, 1.0}, {6, 1.0}, {32767, 2.0}, {40000, 3.0}, {40001, 3.0}, {40002, 1.0}});
    ByTime.OnClick();
    EXPECT_EQ(table.OIDs(), (Oids{5, 32767, 40000, 40001}));
    EXPECT_EQ(Messages.Texts(), Texts{"CalcFeatures sub Error number: 6"});
    EXPECT_EQ(Application->Doc().Redraws(), 0);
    EXPECT_NE(PleaseWait.Form, nullptr);  // windows stay after an error
}

TEST_F(Duplicates, An_object_id_beyond_16_bits_in_the_pass_by_place) {
    auto& table = AddLayer({});
    table.AddPoint(1, 1);
    table.AddPoint(1, 1);
    table.SetNextOID(40000);
    table.AddPoint(2, 2);
    table.AddPoint(2, 2);
    Layer->SelectAll();
    ByPlace.OnClick();
    EXPECT_EQ(table.OIDs(), (Oids{0, 40000, 40001}));
    EXPECT_EQ(Messages.Texts(), Texts{"Calcfeatures sub Error number: 6"});
}

// Object IDs 0 to 32767 fit into 16 bits; the count of 32768 fixes does not.
TEST_F(Duplicates, The_32768th_kept_fix_overflows_the_counter_of_the_pass) {
    auto& table = AddLayer({kTime2});
    for (int i = 0; i < 32768; ++i) table.AddPoint(i, 0.0, {static_cast<double>(i)});
    Layer->SelectAll();
    ByTime.OnClick();
    ByPlace.OnClick();
    EXPECT_EQ(Messages.Texts(), (Texts{"CalcFeatures sub Error number: 6", "Calcfeatures sub Error number: 6"}));
    EXPECT_EQ(table.FeatureCount(), 32768);
}

TEST_F(Duplicates, Exactly_32767_kept_fixes_are_compared) {
    auto& table = AddLayer({kTime2});
    for (int i = 0; i < 32767; ++i) table.AddPoint(i, 0.0, {static_cast<double>(i)});
    Layer->SelectAll();
    ByTime.OnClick();
    ByPlace.OnClick();
    EXPECT_EQ(Messages.Texts(), (Texts{"Deleted 0 duplicate features", "Deleted 0 duplicate features"}));
    EXPECT_EQ(table.FeatureCount(), 32767);
}

TEST_F(Duplicates, A_deleted_fix_beyond_16_bits_is_never_reached) {
    auto& table = AddTimes({{5, 1.0}, {40000, 1.0}});
    table.LetCursorsMeetDeletedRows(true);
    ByTime.OnClick();
    EXPECT_EQ(table.OIDs(), Oids{5});
    EXPECT_EQ(Messages.Texts(), Texts{"Deleted 1 duplicate features"});
}

TEST_F(Duplicates, Beyond_the_limits_every_fix_is_compared) {
    auto& table = AddTimes({{5, 1.0}, {40000, 3.0}, {40001, 3.0}});
    ByTime.SetBeyondLimits(true);
    ByTime.OnClick();
    EXPECT_EQ(table.OIDs(), (Oids{5, 40000}));
    auto& places = AddLayer({});
    places.SetNextOID(40000);
    places.AddPoint(2, 2);
    places.AddPoint(2, 2);
    Layer->SelectAll();
    ByPlace.SetBeyondLimits(true);
    ByPlace.OnClick();
    EXPECT_EQ(places.OIDs(), Oids{40000});
}

TEST_F(Duplicates, A_missing_time_ends_the_pass_of_the_first_fix_that_meets_it) {
    auto& table = AddTimes({{0, 7.0}, {1, 7.0}, {2, kMissing}, {3, 7.0}, {4, 7.0}});
    ByTime.OnClick();
    EXPECT_EQ(table.OIDs(), (Oids{0, 2, 3, 4}));
    EXPECT_EQ(Messages.Texts(), Texts{"CalcFeatures sub Error number: 13"});
}

TEST_F(Duplicates, A_time_beyond_32_bits_is_an_overflow) {
    auto& table = AddTimes({{0, 7.0}, {1, 3e9}});
    ByTime.OnClick();
    EXPECT_EQ(table.OIDs(), (Oids{0, 1}));
    EXPECT_EQ(Messages.Texts(), Texts{"CalcFeatures sub Error number: 6"});
}

TEST_F(Duplicates, Of_fixes_at_one_place_the_first_reached_stays) {
    auto& table = AddPlaces({{1, 1}, {2, 2}, {1, 1}, {2, 2}});
    ByPlace.CalcFeatures(std::make_unique<RowsInOrder>(table, Oids{3, 2, 1, 0}), Layer->Selection());
    EXPECT_EQ(table.OIDs(), (Oids{2, 3}));
    EXPECT_EQ(Messages.Texts(), Texts{"Deleted 2 duplicate features"});
}

TEST_F(Duplicates, A_deleted_fix_met_again_deletes_nothing) {
    auto& table = AddPlaces({{1, 1}, {1, 1}, {1, 1}});
    table.LetCursorsMeetDeletedRows(true);
    ByPlace.OnClick();
    EXPECT_EQ(table.OIDs(), Oids{0});
    EXPECT_EQ(Messages.Texts(), Texts{"Deleted 2 duplicate features"});
}

TEST_F(Duplicates, Nearness_does_not_carry_over_from_fix_to_fix) {
    // 0.8 mm apart each: the first takes the second only, the third is 1.6 mm away and stays.
    const std::vector<Point> chain = {{0, 0}, {0.0008, 0}, {0.0016, 0}};
    auto& table = AddPlaces(chain);
    ByPlace.OnClick();
    EXPECT_EQ(table.OIDs(), (Oids{0, 2}));
    // From the middle both ends are near.
    auto& again = AddPlaces(chain);
    ByPlace.CalcFeatures(std::make_unique<RowsInOrder>(again, Oids{1, 0, 2}), Layer->Selection());
    EXPECT_EQ(again.OIDs(), Oids{1});
}

TEST_F(Duplicates, The_tolerance_is_a_millimetre_in_the_units_of_the_layer) {
    SpatialReference reference = utm15();
    EXPECT_EQ(xy_tolerance(reference), 0.001);
    reference.MetersPerUnit = 0.3048;
    EXPECT_DOUBLE_EQ(xy_tolerance(reference), 0.0032808398950131233);
    reference.MetersPerUnit = 1000.0;
    EXPECT_DOUBLE_EQ(xy_tolerance(reference), 1e-6);
    reference.MetersPerUnit = 0.0;
    EXPECT_EQ(xy_tolerance(reference), 0.0);
    reference.MetersPerUnit = 111319.49;
    reference.IsGeographic = true;
    EXPECT_EQ(xy_tolerance(reference), 0.0);
}

TEST_F(Duplicates, Where_the_unit_is_unknown_only_equal_coordinates_coincide) {
    auto& table = AddPlaces({{1, 1}, {1, 1 + 1e-12}, {1, 1}, {-0.0, 0}, {0.0, -0.0}}, {});
    ByPlace.OnClick();
    EXPECT_EQ(table.OIDs(), (Oids{0, 1, 3}));
}

TEST_F(Duplicates, Fixes_without_a_location_and_huge_coordinates) {
    auto& table = AddLayer({});
    table.Add(platform::Geometry(), {});
    table.Add(platform::Geometry(), {});
    table.AddPoint(1e300, -1e300);
    table.AddPoint(1e300, -1e300);
    table.AddPoint(std::nan(""), 0);
    table.AddPoint(std::nan(""), 0);
    table.AddPoint(9007199254740993.0 * 1e-3, 0);
    table.AddPoint(9007199254740993.0 * 1e-3, 0);
    Layer->SelectAll();
    ByPlace.OnClick();
    EXPECT_EQ(table.OIDs(), (Oids{0, 1, 2, 4, 5, 6}));
}

TEST_F(Duplicates, A_failing_deletion_is_reported_and_earlier_ones_are_flushed) {
    auto& table = AddPlaces({{1, 1}, {1, 1}, {1, 1}});
    table.SetBeforeDelete([](std::int64_t oid) {
        if (oid == 2) Raise(error_number::kPermissionDenied);
    });
    ByPlace.OnClick();
    EXPECT_EQ(table.OIDs(), (Oids{0, 2}));
    EXPECT_EQ(Messages.Texts(), Texts{"Calcfeatures sub Error number: 70"});
    EXPECT_EQ(table.Flushes(), 1);
}

TEST_F(Duplicates, The_progress_bar_runs_to_the_selection_count_plus_1) {
    AddTimes({{0, 1.0}, {1, 2.0}, {2, 3.0}});
    double maximum = 0.0;
    Host.SetOnYield([&] { maximum = PleaseWait.Form ? PleaseWait.Form->PBar.Maximum : maximum; });
    ByTime.OnClick();
    EXPECT_EQ(maximum, 4.0);
    EXPECT_EQ(PleaseWait.LastValue, 3.0);
}

TEST_F(Duplicates, Members_without_a_layer_report_under_their_own_labels) {
    platform::Layer raster;
    raster.Name = "dem";
    Application->Doc().Map().AddLayer(raster);
    EXPECT_EQ(ByTime.GetSelectionFromActiveLayer(), nullptr);
    EXPECT_EQ(ByTime.GetSelectionFrom2Layer("dem"), nullptr);
    EXPECT_EQ(ByPlace.GetSelectionFromActiveLayer(), nullptr);
    EXPECT_EQ(ByPlace.GetSelectionFrom2Layer("dem"), nullptr);
    ByTime.CalcFeatures(nullptr, nullptr);
    ByPlace.CalcFeatures(nullptr, nullptr);
    FIndDupTime2(Services, PleaseWait).OnClick();
    FindDupxy(Services, PleaseWait).OnClick();
    EXPECT_EQ(Messages.Texts(),
              (Texts{"Getselectionfromactivelayer sub Error number: 91", "GetSelectionfromlayer sub Error number: 13",
                     "getselectionfromactivelayer sub Error number: 91", "Getselection sub Error number: 13",
                     "CalcFeatures sub Error number: 91", "Calcfeatures sub Error number: 91",
                     "find and remove dups sub Error number: 91", "Findandremovedups sub Error number: 91"}));
}

TEST_F(Duplicates, Without_an_application_or_a_readable_layer_the_commands_report) {
    SelectUnreadableLayer();
    ByTime.OnClick();
    ByPlace.OnClick();
    ByTime.OnCreate(nullptr);
    ByPlace.OnCreate(nullptr);
    ByTime.OnClick();
    ByPlace.OnClick();
    EXPECT_EQ(Messages.Texts(),
              (Texts{"find and remove dups sub Error number: 91", "Findandremovedups sub Error number: 91",
                     "find and remove dups sub Error number: 91", "Findandremovedups sub Error number: 91"}));
    EXPECT_EQ(PleaseWait.Shown, 0);
}

TEST_F(Duplicates, A_pass_that_lacks_a_part_deletes_nothing) {
    AddTimes({{0, 1.0}, {1, 1.0}});
    const auto selection = Layer->Selection();
    ByTime.CalcFeatures(selection->Find({}), nullptr);
    ByPlace.CalcFeatures(selection->Find({}), nullptr);
    Application->Doc().SetSelectedLayer(std::nullopt);
    ByTime.CalcFeatures(selection->Find({}), selection);
    ByPlace.CalcFeatures(selection->Find({}), selection);
    EXPECT_EQ(Messages.Texts(), (Texts{"CalcFeatures sub Error number: 91", "Calcfeatures sub Error number: 91",
                                       "CalcFeatures sub Error number: 91", "Calcfeatures sub Error number: 91"}));
    EXPECT_EQ(selection->Count(), 2);
}

TEST_F(Duplicates, A_document_without_a_map_has_no_layer_by_name) {
    Application->Doc().SetMap(nullptr);
    EXPECT_EQ(ByTime.GetSelectionFrom2Layer("fixes"), nullptr);
    EXPECT_EQ(ByPlace.GetSelectionFrom2Layer("fixes"), nullptr);
    EXPECT_EQ(Messages.Texts(),
              (Texts{"GetSelectionfromlayer sub Error number: 91", "Getselection sub Error number: 91"}));
}

TEST_F(Duplicates, Several_missing_times_are_one_report) {
    AddTimes({{0, 1.0}, {1, kMissing}, {2, kMissing}, {3, 1.0}});
    ByTime.OnClick();
    EXPECT_EQ(Messages.Texts(), Texts{"CalcFeatures sub Error number: 13"});
}

TEST_F(Duplicates, Fixes_that_lack_one_coordinate_have_no_place) {
    const double none = std::nan("");
    AddPlaces({{1.0, none}, {1.0, none}, {none, 1.0}, {none, 1.0}, {1.0, 1.0}, {1.0, 1.0}});
    ByPlace.OnClick();
    EXPECT_EQ(Messages.Texts(), Texts{"Deleted 1 duplicate features"});
    EXPECT_EQ(Layer->Selection()->Count(), 5);
}

TEST_F(Duplicates, A_window_that_was_never_shown_is_not_hidden) {
    movement::FrmPW form(Host, PleaseWait);
    form.Hide();
    EXPECT_EQ(PleaseWait.Hidden, 0);
}

TEST_F(Duplicates, Selections_are_found_by_name) {
    AddTimes({{0, 1.0}, {1, 2.0}});
    EXPECT_EQ(ByTime.GetSelectionFrom2Layer("fixes")->Count(), 2);
    EXPECT_EQ(ByPlace.GetSelectionFrom2Layer("fixes")->Count(), 2);
    EXPECT_EQ(ByPlace.GetSelectionFrom2Layer("other"), nullptr);
}

// Random layers: what the one pass deletes, in which order, and what it says, is what the nested walks do.

class RandomDuplicates : public Duplicates {
protected:
    std::size_t Below(std::size_t bound) { return std::uniform_int_distribution<std::size_t>(0, bound - 1)(Random); }

    /// Object IDs with gaps, some trials across the limit of 16 bits.
    std::vector<std::int64_t> RandomOids(std::size_t count) {
        std::int64_t oid = Below(4) == 0 ? 32768 - static_cast<std::int64_t>(Below(count)) : 0;
        Oids oids;
        for (std::size_t i = 0; i < count; ++i) oids.push_back(oid += 1 + static_cast<std::int64_t>(Below(3)));
        return oids;
    }

    FieldValue RandomTime(bool withMissing) {
        if (withMissing && Below(40) == 0) return {};
        return static_cast<double>(Below(30)) * 0.5;
    }

    Point RandomPlace(double unit) {
        return {static_cast<double>(Below(12)) * unit, static_cast<double>(Below(12)) * unit};
    }

    /// Runs the tool on a copy of the layer and gives what it did.
    template <class Tool>
    Removal Run(Tool& tool, memory::MemoryFeatureLayer& layer, const Oids& order) {
        Removal removal;
        layer.Features().SetBeforeDelete([&](std::int64_t oid) { removal.Deleted.push_back(oid); });
        tool.CalcFeatures(std::make_unique<RowsInOrder>(layer.Features(), order), layer.Selection());
        removal.Text = Messages.Last().Text;
        return removal;
    }

    std::shared_ptr<memory::MemoryFeatureLayer> CopyOf(memory::MemoryFeatureLayer& original,
                                                       const std::set<std::int64_t>& selected) {
        auto& table = static_cast<IFeatureClass&>(original.Features());
        auto copy =
            std::make_shared<memory::MemoryFeatureClass>(table.Shape(), table.Table().Fields(), table.Reference());
        const auto rows = table.Find({});
        while (const auto row = rows->NextFeature()) {
            copy->SetNextOID(row->OID());
            std::vector<FieldValue> values;
            for (std::size_t i = 0; i < table.Table().Fields().size(); ++i)
                values.push_back(row->Value(static_cast<int>(i)));
            copy->Add(row->Shape(), values);
        }
        auto layer = std::make_shared<memory::MemoryFeatureLayer>("copy", copy);
        layer->Select(selected);
        return layer;
    }

    /// A random part of the rows, selected in both layers, and a random order of it.
    std::pair<std::set<std::int64_t>, Oids> RandomSelection(const Oids& oids) {
        Oids order;
        for (const std::int64_t oid : oids)
            if (Below(5) != 0) order.push_back(oid);
        std::set<std::int64_t> selected(order.begin(), order.end());
        if (Below(2) == 0) std::shuffle(order.begin(), order.end(), Random);
        return {selected, order};
    }

    std::mt19937 Random{20261120};
};

TEST_F(RandomDuplicates, By_time_as_nested_walks_do) {
    int overflows = 0;
    int mismatches = 0;
    for (int trial = 0; trial < 400; ++trial) {
        auto& table = AddLayer({kTime2});
        table.LetCursorsMeetDeletedRows(Below(2) == 0);
        const bool withMissing = Below(4) == 0;
        const Oids oids = RandomOids(1 + Below(60));
        for (const std::int64_t oid : oids) {
            table.SetNextOID(oid);
            table.AddPoint(0, 0, {RandomTime(withMissing)});
        }
        const auto [selected, order] = RandomSelection(oids);
        if (order.empty()) continue;
        Layer->Select(selected);
        const auto twin = CopyOf(*Layer, selected);
        const Removal expected = literal_time2_removal(*twin, order);
        EXPECT_EQ(Run(ByTime, *Layer, order), expected) << "trial " << trial;
        EXPECT_EQ(table.OIDs(), twin->Features().OIDs());
        overflows += expected.Text.ends_with(": 6") ? 1 : 0;
        mismatches += expected.Text.ends_with(": 13") ? 1 : 0;
    }
    EXPECT_GT(overflows, 10);
    EXPECT_GT(mismatches, 10);
}

TEST_F(RandomDuplicates, By_place_as_nested_walks_do) {
    int overflows = 0;
    std::size_t deletions = 0;
    for (int trial = 0; trial < 400; ++trial) {
        SpatialReference reference = utm15();
        const std::vector<double> metresPerUnit = {1.0, 0.3048, 1000.0, 0.0};
        reference.MetersPerUnit = metresPerUnit[Below(metresPerUnit.size())];
        const double tolerance = reference.MetersPerUnit > 0.0 ? 0.001 / reference.MetersPerUnit : 0.0;
        // Steps of a third to a whole tolerance, so that many distances lie near it; some far from the origin.
        const double unit = (tolerance > 0.0 ? tolerance : 1.0) * (0.3 + 0.1 * static_cast<double>(Below(8)));
        const double offset = Below(2) == 0 ? 0.0 : 5.0e6 * (tolerance > 0.0 ? tolerance * 1000.0 : 1.0);
        auto& table = AddLayer({}, reference);
        table.LetCursorsMeetDeletedRows(Below(2) == 0);
        const Oids oids = RandomOids(1 + Below(80));
        for (const std::int64_t oid : oids) {
            table.SetNextOID(oid);
            const Point place = RandomPlace(unit);
            if (Below(30) == 0)
                table.Add(platform::Geometry(), {});
            else
                table.AddPoint(place.X - 5.0 * unit + offset, place.Y - 5.0 * unit);
        }
        const auto [selected, order] = RandomSelection(oids);
        if (order.empty()) continue;
        Layer->Select(selected);
        const auto twin = CopyOf(*Layer, selected);
        const Removal expected = literal_xy_removal(*twin, order, tolerance);
        EXPECT_EQ(Run(ByPlace, *Layer, order), expected) << "trial " << trial;
        EXPECT_EQ(table.OIDs(), twin->Features().OIDs());
        overflows += expected.Text.ends_with(": 6") ? 1 : 0;
        deletions += expected.Deleted.size();
    }
    EXPECT_GT(overflows, 10);
    EXPECT_GT(deletions, 1000U);
}

}  // namespace
}  // namespace wxl::tests
