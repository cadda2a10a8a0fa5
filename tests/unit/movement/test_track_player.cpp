#include "movement/frmOVI.h"
#include "movement/MOLE.h"
#include "movement/track_symbol.h"
#include "tests/unit/movement/movement_desk.h"

namespace wxl::tests {
namespace {

using movement::frmOVI;
using movement::MOLE;
using namespace platform;

constexpr const char* kRestart = "You must select a point layer and restart the display tracks tool.";
constexpr const char* kOutOfSequence = "This track segment is out of sequence.  Do you want to draw the track segment?";

/// Shows the player as a desktop does, and presses what the test wants.
class ScriptedWindow final : public movement::ITrackPlayerWindow {
public:
    void ShowTrackPlayer(frmOVI& form) override {
        ++Shown;
        form.Form_Load();
        if (Script) Script(form);
        form.Form_Unload();
    }
    int Shown = 0;
    std::function<void(frmOVI&)> Script;
};

class TrackPlayer : public MovementDesk {
protected:
    TrackPlayer() { Clock.SetStepPerReading(0.01F); }

    /// Fixes 10 m apart along a line, with object IDs `oids`, speed = object ID / 2 and distance = 10; all selected.
    memory::MemoryFeatureClass& AddTrack(const std::vector<std::int64_t>& oids) {
        auto& table = AddLayer({{.Name = "Me_Per_Sec", .Type = FieldType::kDouble},
                                {.Name = "Dist", .Type = FieldType::kDouble},
                                {.Name = "Date", .Type = FieldType::kText},
                                {.Name = "Time1", .Type = FieldType::kText}});
        for (const std::int64_t oid : oids) {
            table.SetNextOID(oid);
            table.AddPoint(Place(oid).X, 0.0,
                           {static_cast<double>(oid) * 0.5, 10.0, "5/" + std::to_string(oid), "noon"});
        }
        Layer->SelectAll();
        return table;
    }

    static Point Place(std::int64_t oid) { return {static_cast<double>(oid) * 10.0, 0.0}; }

    /// Loads the player over the present selection.
    void Load(std::int64_t lastFID) {
        Player.SetApplication(Application);
        Player.SetLastFID(lastFID);
        Player.Form_Load();
    }

    /// The legs on the map now, as pairs of object IDs.
    std::vector<std::pair<int, int>> Legs() {
        std::vector<std::pair<int, int>> legs;
        for (const TrackLeg& leg : Application->Doc().Map().Graphics().back()->Legs)
            legs.emplace_back(static_cast<int>(leg.From.X / 10.0), static_cast<int>(leg.To.X / 10.0));
        return legs;
    }
    using LegList = std::vector<std::pair<int, int>>;

    memory::MemoryGraphics& DrawnGraphics() { return *Application->Doc().Map().Graphics().back(); }

    memory::MemoryMap& Map() { return Application->Doc().Map(); }

    ScriptedWindow Window;
    frmOVI Player{Services};
};

// The command

TEST_F(TrackPlayer, The_command_wants_a_point_layer_and_two_selected_fixes) {
    MOLE command(Services, Window);
    command.OnCreate(Application);
    command.OnClick();
    EXPECT_EQ(Messages.Last().Text, "You must select a point layer");
    EXPECT_EQ(Messages.Last().Title, "Display Tracks");
    AddLayer({}, utm15(), ShapeType::kPolygon);
    command.OnClick();
    EXPECT_EQ(Messages.Last().Text, "You must select a point layer");
    AddTrack({0, 1, 2});
    Layer->Select({});
    command.OnClick();
    EXPECT_EQ(Messages.Last().Text, "You must select the points to track");
    EXPECT_EQ(Messages.Last().Title, "");
    Layer->Select({1});
    command.OnClick();
    EXPECT_EQ(Messages.Last().Text, "You must select more then one point to track");
    EXPECT_EQ(Messages.Last().Title, "");
    EXPECT_EQ(Window.Shown, 0);
}

TEST_F(TrackPlayer, The_command_hands_over_the_last_object_id_of_the_whole_layer) {
    AddTrack({3, 4, 5, 8});
    Layer->Select({4, 5});
    MOLE command(Services, Window);
    command.OnCreate(Application);
    Window.Script = [&](frmOVI& form) {
        EXPECT_EQ(form.Caption, "Display Travel");
        EXPECT_EQ(form.lblfix.Caption, "5/9");
        EXPECT_EQ(Application->Doc().Listener(), &form);
    };
    command.OnClick();
    EXPECT_EQ(Window.Shown, 1);
    EXPECT_EQ(Application->Doc().Listener(), nullptr);
    EXPECT_TRUE(Messages.Boxes().empty());
}

TEST_F(TrackPlayer, A_last_object_id_beyond_16_bits_ends_the_tool) {
    AddTrack({3, 4, 32768});
    Layer->Select({3, 4});
    MOLE command(Services, Window);
    command.OnCreate(Application);
    command.OnClick();
    EXPECT_EQ(Messages.Texts(), Texts{"getlastFID sub Error number: 6"});
    EXPECT_EQ(Window.Shown, 0);
    command.SetBeyondLimits(true);
    Window.Script = [](frmOVI& form) { EXPECT_EQ(form.lblfix.Caption, "4/32769"); };
    command.OnClick();
    EXPECT_EQ(Window.Shown, 1);
}

TEST_F(TrackPlayer, Without_an_application_or_a_readable_layer_the_command_reports) {
    MOLE command(Services, Window);
    command.OnCreate(nullptr);
    command.OnClick();
    EXPECT_EQ(command.getLastFID(), std::nullopt);
    command.OnCreate(Application);
    EXPECT_EQ(command.getLastFID(), std::nullopt);
    SelectUnreadableLayer();
    command.OnClick();
    EXPECT_EQ(Messages.Texts(), (Texts{"Icommand_onclick sub Error number: 91", "getlastFID sub Error number: 91",
                                       "getlastFID sub Error number: 91", "Icommand_onclick sub Error number: 91"}));
    EXPECT_EQ(Window.Shown, 0);
}

TEST_F(TrackPlayer, A_click_before_OnCreate_is_reported) {
    MOLE command(Services, Window);
    command.OnClick();
    EXPECT_EQ(Messages.Texts(), Texts{"Icommand_onclick sub Error number: 91"});
}

// The form

TEST_F(TrackPlayer, Initial_captions) {
    EXPECT_EQ(Player.CmdTrackMoose.Caption, "Display Travel");
    EXPECT_EQ(Player.CmbStep.Caption, "Step Forward");
    EXPECT_EQ(Player.cmdStepBack.Caption, "Step Back");
    EXPECT_EQ(Player.cmdStop.Caption, "Stop");
    EXPECT_EQ(Player.cbOneStep.Caption, "One Step at a Time");
    EXPECT_EQ(Player.CBKeepGraphic.Caption, " Keep Travel Path");
    EXPECT_EQ(Player.cmdDeleteGraphic.Caption, "Delete Travel Path");
    EXPECT_EQ(Player.CmdSaveTravel.Caption, "Save Travel");
    EXPECT_EQ(Player.TxtSec.Text, ".01");
    EXPECT_EQ(Player.Label2.Caption, "Display Speed (sec)");
    EXPECT_EQ(Player.Label1.Caption, "Fix");
    EXPECT_EQ(Player.lblfix.Caption, "0/0");
    EXPECT_EQ(Player.lblStats.Caption, "Meters per sec: 0 Distance:0");
    EXPECT_EQ(Player.LblDateAndTime1.Caption, "Date:");
}

TEST_F(TrackPlayer, Loading_shows_the_first_fix_and_runs_the_slider_over_the_selection) {
    AddTrack({3, 4, 5, 6});
    Layer->Select({4, 5, 6});
    Load(6);
    EXPECT_EQ(Player.lblStats.Caption, "Meters per sec: 0 Distance: 0");
    EXPECT_EQ(Player.lblfix.Caption, "5/7");
    EXPECT_EQ(Player.Slider.Minimum, 0);
    EXPECT_EQ(Player.Slider.Maximum, 2);
    EXPECT_EQ(Player.Slider.Value, 0);
    EXPECT_TRUE(Legs().empty());
}

TEST_F(TrackPlayer, A_step_shows_the_fix_and_draws_the_leg_to_it) {
    AddTrack({3, 4, 5});
    Load(5);
    Player.CmbStep_Click();
    EXPECT_EQ(Player.Slider.Value, 1);
    EXPECT_EQ(Player.lblStats.Caption, "Meters per sec: 2 Distance: 10");
    EXPECT_EQ(Player.LblDateAndTime1.Caption, "Date: 5/4 at noon");
    EXPECT_EQ(Player.lblfix.Caption, "5/6");
    EXPECT_EQ(Legs(), (LegList{{3, 4}}));
    EXPECT_GE(Map().Graphics().back()->Refreshes, 1);
}

TEST_F(TrackPlayer, Two_fixes_make_one_leg) {
    AddTrack({0, 1});
    Load(1);
    Player.CmbStep_Click();
    EXPECT_TRUE(Messages.Boxes().empty());
    Player.CmbStep_Click();
    EXPECT_EQ(Messages.Texts(), Texts{"No more steps forward."});
    EXPECT_EQ(Messages.Last().Title, "Display Tracks");
    EXPECT_EQ(Player.Slider.Value, 1);
    EXPECT_EQ(Legs(), (LegList{{0, 1}}));
}

TEST_F(TrackPlayer, Stepping_back_draws_backwards_and_ends_at_the_first_fix) {
    AddTrack({0, 1, 2});
    Load(2);
    Player.cmdStepBack_Click();
    EXPECT_EQ(Messages.Texts(), Texts{"No more steps back."});
    EXPECT_EQ(Messages.Last().Title, "Display Tracks");
    Player.CmbStep_Click();
    Player.CmbStep_Click();
    Player.cmdStepBack_Click();
    EXPECT_EQ(Legs(), (LegList{{2, 1}}));
    EXPECT_EQ(Player.lblfix.Caption, "2/3");
}

TEST_F(TrackPlayer, Kept_legs_make_the_path_and_others_replace_each_other) {
    AddTrack({0, 1, 2, 3});
    Load(3);
    Player.CBKeepGraphic.Value = 1;
    Player.CmbStep_Click();
    Player.CmbStep_Click();
    EXPECT_EQ(Legs(), (LegList{{0, 1}, {1, 2}}));
    Player.CBKeepGraphic.Value = 0;
    Player.CBKeepGraphic_Click();
    EXPECT_EQ(Legs().size(), 2U);
    Player.CmbStep_Click();
    EXPECT_EQ(Legs(), (LegList{{2, 3}}));
    Player.cmdDeleteGraphic_Click();
    EXPECT_TRUE(Legs().empty());
}

TEST_F(TrackPlayer, A_gap_asks_and_no_still_advances) {
    AddTrack({3, 4, 7, 8});
    Load(8);
    Player.CBKeepGraphic.Value = 1;
    Player.CmbStep_Click();
    Messages.WillAnswer({Answer::kNo});
    Player.CmbStep_Click();
    EXPECT_EQ(Messages.Texts(), Texts{kOutOfSequence});
    EXPECT_EQ(Messages.Last().Title, "Display Tracks");
    EXPECT_EQ(Messages.Last().Choice, Buttons::kYesNo);
    EXPECT_EQ(Messages.Last().About, Topic::kOutOfSequence);
    EXPECT_EQ(Player.lblfix.Caption, "8/9");
    EXPECT_EQ(Player.Slider.Value, 2);
    Player.CmbStep_Click();
    EXPECT_EQ(Legs(), (LegList{{3, 4}, {7, 8}}));
}

TEST_F(TrackPlayer, Yes_draws_over_the_gap_and_the_way_back_never_asks) {
    AddTrack({3, 4, 7});
    Load(7);
    Player.CmbStep_Click();
    Messages.WillAnswer({Answer::kYes});
    Player.CmbStep_Click();
    EXPECT_EQ(Legs(), (LegList{{4, 7}}));
    Player.cmdStepBack_Click();
    EXPECT_EQ(Legs(), (LegList{{7, 4}}));
    EXPECT_EQ(Messages.Boxes().size(), 1U);
}

TEST_F(TrackPlayer, Every_selected_fix_is_visited_whatever_the_gaps) {
    // First + position would meet 2 twice and 9 never.
    AddTrack({0, 2, 3, 9});
    Load(9);
    Player.CBKeepGraphic.Value = 1;
    Messages.AlwaysAnswer(Topic::kOutOfSequence, Answer::kYes);
    for (int i = 0; i < 3; ++i) Player.CmbStep_Click();
    EXPECT_EQ(Legs(), (LegList{{0, 2}, {2, 3}, {3, 9}}));
}

TEST_F(TrackPlayer, The_slider_moved_by_hand_shows_its_fix_and_the_next_step_starts_there) {
    AddTrack({0, 1, 2, 3, 4});
    Load(4);
    Player.Slider.Value = 3;
    Player.Slider_Change();
    EXPECT_EQ(Player.lblfix.Caption, "4/5");
    EXPECT_EQ(Player.lblStats.Caption, "Meters per sec: 1.5 Distance: 10");
    EXPECT_TRUE(Legs().empty());
    Player.CmbStep_Click();
    EXPECT_EQ(Legs(), (LegList{{3, 4}}));
    EXPECT_TRUE(Messages.Boxes().empty());
}

TEST_F(TrackPlayer, Absent_fields_and_missing_values_have_their_stand_ins) {
    auto& table = AddLayer({{.Name = "DATE_", .Type = FieldType::kText}});
    table.AddPoint(0, 0);
    table.AddPoint(1, 0, {"6/1"});
    table.AddPoint(2, 0);
    Layer->SelectAll();
    Load(2);
    Player.CmbStep_Click();
    EXPECT_EQ(Player.lblStats.Caption, "Meters per sec: 0 Distance: 0");
    EXPECT_EQ(Player.LblDateAndTime1.Caption, "Date: 6/1 at No data");
    Player.CmbStep_Click();
    EXPECT_EQ(Player.LblDateAndTime1.Caption, "Date: No data at No data");
}

TEST_F(TrackPlayer, The_field_date_comes_before_date_underscore) {
    auto& table = AddLayer({{.Name = "Date_", .Type = FieldType::kText}, {.Name = "Date", .Type = FieldType::kText}});
    table.AddPoint(0, 0, {"a", "b"});
    table.AddPoint(1, 0, {"c", "d"});
    Layer->SelectAll();
    Load(1);
    Player.CmbStep_Click();
    EXPECT_EQ(Player.LblDateAndTime1.Caption, "Date: d at No data");
}

TEST_F(TrackPlayer, A_speed_that_is_no_number_is_reported_with_advice) {
    auto& table = AddLayer({{.Name = "Me_Per_Sec", .Type = FieldType::kText}});
    for (int i = 0; i < 3; ++i) table.AddPoint(i, 0, {i == 1 ? "fast" : "1.5"});
    Layer->SelectAll();
    Load(2);
    Player.CmbStep_Click();
    Player.Slider.Value = 2;
    Player.cmdStepBack_Click();
    Player.Slider.Value = 0;
    Player.CmdTrackMoose_Click();
    EXPECT_EQ(Messages.Texts(), (Texts{"cmdstep_Click sub Error number: 13Please check your data...",
                                       "cmdstepback sub Error number: 13Please check your data...",
                                       "Auto_Track_M sub Error number: 13Please check your data..."}));
    for (const MessageBox& box : Messages.Boxes()) EXPECT_EQ(box.Title, "");
}

TEST_F(TrackPlayer, A_fix_without_a_location_is_reported_by_the_drawing) {
    auto& table = AddLayer({});
    table.AddPoint(0, 0);
    table.Add(platform::Geometry(), {});
    Layer->SelectAll();
    Load(1);
    Player.CmbStep_Click();
    EXPECT_EQ(Messages.Texts(), Texts{"DrawMLine Error number: 91"});
    EXPECT_EQ(Player.lblfix.Caption, "2/2");
}

TEST_F(TrackPlayer, The_fix_counter_is_kept_in_16_bits) {
    AddTrack({32765, 32766, 32767});
    Layer->Select({32765, 32766});
    Load(32766);
    EXPECT_EQ(Player.lblfix.Caption, "32766/32767");
    EXPECT_TRUE(Messages.Boxes().empty());
    Layer->SelectAll();
    Load(32767);
    EXPECT_EQ(Messages.Texts(), Texts{"Form_Load sub Error number: 6"});
    Player.CmbStep_Click();
    EXPECT_EQ(Messages.Last().Text, "cmdstep_Click sub Error number: 6Please check your data...");
}

TEST_F(TrackPlayer, Beyond_the_limits_every_fix_counts) {
    AddTrack({32767, 32768});
    Player.SetBeyondLimits(true);
    Load(32768);
    Player.CmbStep_Click();
    EXPECT_EQ(Player.lblfix.Caption, "32769/32769");
    EXPECT_TRUE(Messages.Boxes().empty());
}

TEST_F(TrackPlayer, The_map_pans_to_a_leg_that_ends_outside_the_view) {
    AddTrack({0, 1, 2});
    Map().SetView({-5, -5, 15, 5});
    Load(2);
    Player.CmbStep_Click();
    EXPECT_TRUE(Map().Pans().empty());
    Player.CmbStep_Click();
    EXPECT_EQ(Map().Pans(), std::vector<Point>{Place(2)});
}

TEST_F(TrackPlayer, Every_side_of_the_view_makes_the_map_pan_and_its_edges_do_not) {
    const std::vector<Point> track = {{0, 0}, {-10, 0}, {10, 0}, {0, -10}, {0, 10}, {-11, 0}, {0, -11}, {0, 11}};
    auto& table = AddLayer({});
    for (const Point& place : track) table.AddPoint(place.X, place.Y);
    Layer->SelectAll();
    Map().SetView({-10, -10, 10, 10});
    Load(7);
    for (std::size_t i = 1; i < track.size(); ++i) Player.CmbStep_Click();
    EXPECT_EQ(Map().Pans(), (std::vector<Point>{{-11, 0}, {0, -11}, {0, 11}}));
    EXPECT_TRUE(Messages.Boxes().empty());
}

TEST_F(TrackPlayer, A_map_that_does_not_follow_stays) {
    AddTrack({0, 1, 2});
    Map().SetView({-5, -5, 15, 5});
    Load(2);
    EXPECT_EQ(Player.chkFollow.Value, 1);
    Player.chkFollow.Value = 0;
    Player.CmbStep_Click();
    Player.CmbStep_Click();
    EXPECT_TRUE(Map().Pans().empty());
    EXPECT_EQ(Legs(), (LegList{{1, 2}}));
}

TEST_F(TrackPlayer, Zoom_buttons_show_more_or_less_around_the_fix_and_the_whole_track) {
    AddTrack({0, 1, 2});
    Load(2);
    Player.CmbStep_Click();
    Player.cmdZoomIn_Click();
    Player.cmdZoomOut_Click();
    EXPECT_EQ(DrawnGraphics().Zooms, (std::vector<std::pair<double, Point>>{{0.5, Place(1)}, {2.0, Place(1)}}));
    Player.cmdZoomTrack_Click();
    EXPECT_EQ(DrawnGraphics().ZoomedTo, (std::vector<std::vector<Point>>{{Place(0), Place(1), Place(2)}}));
}

TEST_F(TrackPlayer, Zoom_buttons_without_a_fix_do_nothing) {
    Player.cmdZoomIn_Click();
    Player.cmdZoomTrack_Click();
    auto& table = AddTrack({0, 1});
    table.SetBeforeFind([] { Raise(error_number::kDeviceIo); });
    Load(1);
    Player.cmdZoomOut_Click();
    Player.cmdZoomTrack_Click();
    EXPECT_TRUE(DrawnGraphics().Zooms.empty());
    EXPECT_TRUE(DrawnGraphics().ZoomedTo.empty());
    EXPECT_EQ(Messages.Texts(), Texts{"GetCollectionFromActiveLayer Error number: 57"});
}

TEST_F(TrackPlayer, The_number_of_selected_fixes_stands_beside_the_counter_of_rows) {
    AddTrack({0, 1, 2, 3});
    Layer->Select({1, 2, 3});
    EXPECT_EQ(Player.lblSelected.Caption, "");
    Load(3);
    EXPECT_EQ(Player.lblSelected.Caption, "3 fixes selected");
    EXPECT_EQ(Player.lblfix.Caption, "2/4");
    Layer->Select({2});
    Application->Doc().Listener()->SelectionChanged();
    EXPECT_EQ(Player.lblSelected.Caption, "1 fix selected");
}

TEST_F(TrackPlayer, A_fix_without_a_place_on_the_map_is_told_while_it_is_shown) {
    AddTrack({0, 1, 2});
    Map().SetWorld({-5, -5, 15, 5});
    Load(2);
    Player.CmbStep_Click();
    EXPECT_EQ(Player.lblNotice.Caption, "");
    Player.CmbStep_Click();
    EXPECT_EQ(Player.lblNotice.Caption,
              "This fix has no place in the project's coordinate system: its legs are not drawn, but saved.");
    EXPECT_EQ(Player.Legs().size(), 1U);
    Player.cmdStepBack_Click();
    EXPECT_EQ(Player.lblNotice.Caption, "");
    EXPECT_TRUE(Messages.Boxes().empty());
}

TEST_F(TrackPlayer, A_leg_looks_as_it_should) {
    using namespace movement::track_symbol;
    EXPECT_EQ(kLineWidth, 2.0);
    EXPECT_EQ(kLineColour.Red, 223);
    EXPECT_EQ(kLineColour.Green, 223);
    EXPECT_EQ(kLineColour.Blue, 223);
    EXPECT_EQ(kMarkerColour.Red, 255);
    EXPECT_EQ(kMarkerColour.Green, 0);
    EXPECT_EQ(kMarkerColour.Blue, 0);
    EXPECT_EQ(kMarkerLength, 12.0);
    EXPECT_EQ(kMarkerWidth, 8.0);
}

TEST_F(TrackPlayer, Thirty_thousand_kept_legs_are_one_call_each) {
    std::vector<std::int64_t> oids(30000);
    for (std::size_t i = 0; i < oids.size(); ++i) oids[i] = static_cast<std::int64_t>(i);
    auto& table = AddTrack(oids);
    Load(29999);
    const auto finds = table.Finds();
    Player.CBKeepGraphic.Value = 1;
    for (int i = 0; i < 29999; ++i) Player.CmbStep_Click();
    EXPECT_EQ(Legs().size(), 29999U);
    EXPECT_EQ(table.Finds(), finds);  // the selection is read once, on loading
    EXPECT_TRUE(Messages.Boxes().empty());
}

// Playing

TEST_F(TrackPlayer, Playing_runs_to_the_end_and_says_so) {
    AddTrack({0, 1, 2, 3});
    Load(3);
    Player.CBKeepGraphic.Value = 1;
    Player.CmdTrackMoose_Click();
    EXPECT_EQ(Legs(), (LegList{{0, 1}, {1, 2}, {2, 3}}));
    EXPECT_EQ(Messages.Texts(), Texts{"No more steps. Please reset."});
    EXPECT_EQ(Messages.Last().Title, "Display Tracks");
    EXPECT_EQ(Player.Slider.Value, 3);
}

TEST_F(TrackPlayer, Stop_ends_the_play_and_the_next_one_resumes_with_the_path_kept) {
    AddTrack({0, 1, 2, 3});
    Load(3);
    Player.CBKeepGraphic.Value = 1;
    Host.SetOnYield([&] {
        if (Player.Slider.Value == 2) Player.cmdStop_Click();
    });
    Player.CmdTrackMoose_Click();
    EXPECT_EQ(Legs(), (LegList{{0, 1}, {1, 2}}));
    EXPECT_TRUE(Messages.Boxes().empty());
    Host.SetOnYield(nullptr);
    Player.CmdTrackMoose_Click();
    EXPECT_EQ(Legs(), (LegList{{0, 1}, {1, 2}, {2, 3}}));
}

TEST_F(TrackPlayer, A_play_that_was_not_stopped_is_followed_by_a_fresh_path) {
    AddTrack({0, 1, 2});
    Load(2);
    Player.CBKeepGraphic.Value = 1;
    Player.CmdTrackMoose_Click();
    Player.Slider.Value = 1;
    Player.Slider_Change();
    Player.CmdTrackMoose_Click();
    EXPECT_EQ(Legs(), (LegList{{1, 2}}));
}

TEST_F(TrackPlayer, One_step_at_a_time_pauses_after_each) {
    AddTrack({0, 1, 2});
    Load(2);
    Player.CBKeepGraphic.Value = 1;
    Player.cbOneStep.Value = 1;
    Player.cbOneStep_Click();
    Player.CmdTrackMoose_Click();
    EXPECT_EQ(Legs(), (LegList{{0, 1}}));
    Player.CmdTrackMoose_Click();
    EXPECT_EQ(Legs(), (LegList{{0, 1}, {1, 2}}));
    Player.CmdTrackMoose_Click();
    EXPECT_EQ(Messages.Texts(), Texts{"No more steps. Please reset."});
}

TEST_F(TrackPlayer, The_delay_is_held_and_the_host_gets_every_turn) {
    AddTrack({0, 1, 2});
    Load(2);
    Player.TxtSec.Text = "0.5";
    Clock.SetStepPerReading(0.125F);
    Player.CmdTrackMoose_Click();
    // Each wait: one reading at the start, then a turn and a reading until 0.5 s have passed: 4 turns.
    EXPECT_EQ(Host.Yields(), 8);
}

TEST_F(TrackPlayer, A_wait_sleeps_for_what_is_left_of_the_delay) {
    AddTrack({0, 1});
    Load(1);
    Player.TxtSec.Text = "0.5";
    Clock.SetStepPerReading(0.125F);
    Player.CmdTrackMoose_Click();
    EXPECT_EQ(Host.Waits(), (std::vector<double>{0.5, 0.375, 0.25, 0.125}));
}

TEST_F(TrackPlayer, A_wait_across_midnight_ends) {
    AddTrack({0, 1});
    Load(1);
    Player.TxtSec.Text = "1";
    Clock.SetSecondsSinceMidnight(86399.5F);
    Clock.SetStepPerReading(0.25F);
    Player.CmdTrackMoose_Click();
    EXPECT_EQ(Host.Yields(), 4);
}

TEST_F(TrackPlayer, A_clock_that_is_set_back_only_prolongs_the_wait) {
    AddTrack({0, 1});
    Load(1);
    Player.TxtSec.Text = "1";
    Clock.SetSecondsSinceMidnight(5000.0F);
    Clock.SetStepPerReading(0.25F);
    Host.SetOnYield([&] {
        if (Host.Yields() == 2) Clock.SetSecondsSinceMidnight(1400.0F);
    });
    Player.CmdTrackMoose_Click();
    EXPECT_EQ(Messages.Texts(), Texts{"No more steps. Please reset."});
    EXPECT_EQ(Host.Yields(), 5);
}

TEST_F(TrackPlayer, The_delay_slider_writes_its_seconds) {
    const std::vector<std::pair<int, std::string>> texts = {{0, "0.01"}, {1, "0.02"},  {6, "0.07"},
                                                            {9, "0.1"},  {28, "0.29"}, {99, "1"}};
    for (const auto& [position, text] : texts) {
        Player.SlideSec.Value = position;
        Player.SlideSec_Change();
        EXPECT_EQ(Player.TxtSec.Text, text);
    }
    EXPECT_EQ(Player.SlideSec.Minimum, 0);
    EXPECT_EQ(Player.SlideSec.Maximum, 99);
}

TEST_F(TrackPlayer, A_delay_that_is_no_number_is_reported) {
    AddTrack({0, 1});
    Load(1);
    Player.TxtSec.Text = "fast";
    Player.CmdTrackMoose_Click();
    EXPECT_EQ(Messages.Texts(), Texts{"cmdtrackM sub Error number: 13"});
    EXPECT_TRUE(Legs().empty());
}

TEST_F(TrackPlayer, A_delay_with_a_comma_is_explained_beside_the_report) {
    AddTrack({0, 1, 2});
    Load(2);
    Player.TxtSec.Text = "0,5";
    Player.CmdTrackMoose_Click();
    EXPECT_EQ(Messages.Texts(), Texts{"cmdtrackM sub Error number: 13"});
    EXPECT_EQ(Player.lblNotice.Caption, "\"0,5\" is not a number of seconds. Please write a point, as in 0.5.");
    Player.TxtSec.Text = "0.5";
    Player.cbOneStep.Value = 1;
    Player.CmdTrackMoose_Click();
    EXPECT_EQ(Player.lblNotice.Caption, "");
}

TEST_F(TrackPlayer, A_second_press_while_it_plays_does_nothing) {
    AddTrack({0, 1, 2});
    Load(2);
    Host.SetOnYield([&] { Player.CmdTrackMoose_Click(); });
    Player.CmdTrackMoose_Click();
    EXPECT_EQ(Messages.Texts(), Texts{"No more steps. Please reset."});
}

TEST_F(TrackPlayer, Keep_is_read_when_the_play_begins) {
    AddTrack({0, 1, 2});
    Load(2);
    Player.CBKeepGraphic.Value = 1;
    Host.SetOnYield([&] {
        Player.CBKeepGraphic.Value = 0;
        Player.CBKeepGraphic_Click();
    });
    Player.CmdTrackMoose_Click();
    EXPECT_EQ(Legs().size(), 2U);
}

TEST_F(TrackPlayer, Closing_the_form_ends_the_play_and_takes_the_track_off_the_map) {
    AddTrack({0, 1, 2, 3});
    Load(3);
    Host.SetOnYield([&] { Player.Form_Unload(); });
    Player.CmdTrackMoose_Click();
    EXPECT_TRUE(Legs().empty());
    EXPECT_TRUE(Messages.Boxes().empty());
    EXPECT_EQ(Application->Doc().Listener(), nullptr);
    Player.Form_Unload();
    Player.Form_Terminate();
    EXPECT_TRUE(Messages.Boxes().empty());
}

TEST_F(TrackPlayer, Playing_without_a_selected_layer) {
    AddTrack({0, 1});
    Load(1);
    Application->Doc().SetSelectedLayer(std::nullopt);
    Player.CmdTrackMoose_Click();
    EXPECT_EQ(Messages.Texts(), Texts{kRestart});
    EXPECT_EQ(Messages.Last().Title, "Display Tracks");
    EXPECT_TRUE(Legs().empty());
}

// Map events

TEST_F(TrackPlayer, Changes_of_the_map_ask_for_a_restart) {
    AddTrack({0, 1});
    Load(1);
    Application->Doc().Listener()->ContentsChanged();
    Application->Doc().Listener()->FocusMapChanged();
    EXPECT_EQ(Messages.Texts(), (Texts{"Feature Layer changed. Please restart the display tracks tool.",
                                       "Maps changed. Please restart the display tracks tool."}));
    EXPECT_EQ(Messages.Last().Title, "");
}

TEST_F(TrackPlayer, A_removed_layer_ends_the_player_with_a_sentence) {
    AddTrack({0, 1, 2});
    Load(2);
    Player.CmbStep_Click();
    Layer->SetRemoved();
    Application->Doc().SetSelectedLayer(std::nullopt);
    Application->Doc().Listener()->ContentsChanged();
    EXPECT_EQ(Messages.Texts(), Texts{"Feature Layer changed. Please restart the display tracks tool."});
    EXPECT_EQ(Player.lblNotice.Caption,
              "The layer \"fixes\" was removed from the map: its track ends here. The drawn path can still be saved.");
    EXPECT_EQ(Player.lblSelected.Caption, "0 fixes selected");
    for (const Button* button :
         {&Player.CmdTrackMoose, &Player.cmdStop, &Player.CmbStep, &Player.cmdStepBack, &Player.cmdZoomTrack})
        EXPECT_FALSE(button->Enabled) << button->Caption;
    EXPECT_FALSE(Player.Slider.Enabled);
    EXPECT_EQ(Legs(), (LegList{{0, 1}})) << "what is drawn stays";
}

TEST_F(TrackPlayer, A_removed_layer_ends_a_play) {
    AddTrack({0, 1, 2, 3});
    Load(3);
    Host.SetOnYield([&] {
        Layer->SetRemoved();
        Application->Doc().Listener()->ContentsChanged();
    });
    Player.CmdTrackMoose_Click();
    EXPECT_EQ(Legs(), (LegList{{0, 1}}));
    EXPECT_EQ(Messages.Boxes().size(), 1U);
}

TEST_F(TrackPlayer, A_new_selection_after_a_removed_layer_can_be_played) {
    AddTrack({0, 1});
    Load(1);
    Layer->SetRemoved();
    Application->Doc().Listener()->ContentsChanged();
    AddTrack({5, 6});
    Application->Doc().Listener()->SelectionChanged();
    EXPECT_EQ(Player.lblNotice.Caption, "");
    EXPECT_TRUE(Player.CmbStep.Enabled);
    Player.CmbStep_Click();
    EXPECT_EQ(Legs(), (LegList{{5, 6}}));
}

TEST_F(TrackPlayer, Legs_are_drawn_in_the_system_of_their_layer) {
    AddTrack({0, 1});
    Load(1);
    EXPECT_EQ(DrawnGraphics().Reference, utm15());
    Player.CmbStep_Click();
    SpatialReference other = utm15();
    other.Name = "NAD_1983_UTM_Zone_16N";
    auto& table = AddLayer({}, other);
    table.AddPoint(0.0, 0.0);
    table.AddPoint(10.0, 0.0);
    Layer->SelectAll();
    Application->Doc().Listener()->SelectionChanged();
    EXPECT_EQ(DrawnGraphics().Reference, other);
    EXPECT_TRUE(Player.Legs().empty());
    EXPECT_TRUE(Map().Graphics().front()->Legs.empty());
    EXPECT_EQ(Player.lblNotice.Caption, "The path drawn before was in another coordinate system: it is off the map.");
}

TEST_F(TrackPlayer, A_new_selection_rebuilds_the_player) {
    AddTrack({0, 1, 2, 3, 4});
    Layer->Select({0, 1, 2});
    Load(4);
    Player.CmbStep_Click();
    Layer->Select({3, 4});
    Application->Doc().Listener()->SelectionChanged();
    EXPECT_EQ(Player.Slider.Maximum, 1);
    EXPECT_EQ(Player.Slider.Value, 0);
    EXPECT_EQ(Player.lblfix.Caption, "4/5");
    EXPECT_EQ(Player.lblStats.Caption, "Meters per sec: 0 Distance: 0");
    Player.CmbStep_Click();
    EXPECT_EQ(Legs(), (LegList{{3, 4}}));
    EXPECT_TRUE(Messages.Boxes().empty());
}

TEST_F(TrackPlayer, A_new_selection_in_another_layer_counts_its_fixes) {
    AddTrack({0, 1});
    Load(1);
    AddTrack({5, 6, 20});
    Layer->Select({5, 6});
    Application->Doc().Listener()->SelectionChanged();
    EXPECT_EQ(Player.lblfix.Caption, "6/21");
}

TEST_F(TrackPlayer, A_new_selection_ends_a_play) {
    AddTrack({0, 1, 2, 3});
    Load(3);
    Host.SetOnYield([&] {
        Layer->Select({2, 3});
        Application->Doc().Listener()->SelectionChanged();
    });
    Player.CmdTrackMoose_Click();
    EXPECT_EQ(Player.Slider.Value, 0);
    EXPECT_EQ(Legs(), (LegList{{0, 1}}));
    EXPECT_TRUE(Messages.Boxes().empty());
}

TEST_F(TrackPlayer, The_play_of_a_new_selection_after_a_stop_begins_a_fresh_path) {
    AddTrack({0, 1, 2, 3, 4, 5});
    Layer->Select({0, 1, 2});
    Load(5);
    Player.CBKeepGraphic.Value = 1;
    Player.CmbStep_Click();
    Player.cmdStop_Click();
    Layer->Select({3, 4, 5});
    Application->Doc().Listener()->SelectionChanged();
    Player.CmdTrackMoose_Click();
    EXPECT_EQ(Legs(), (LegList{{3, 4}, {4, 5}}));
}

TEST_F(TrackPlayer, The_play_of_a_new_selection_after_a_single_step_begins_a_fresh_path) {
    AddTrack({0, 1, 2, 3, 4, 5});
    Layer->Select({0, 1, 2});
    Load(5);
    Player.CBKeepGraphic.Value = 1;
    Player.cbOneStep.Value = 1;
    Player.CmdTrackMoose_Click();
    EXPECT_EQ(Legs(), (LegList{{0, 1}}));
    Layer->Select({3, 4, 5});
    Application->Doc().Listener()->SelectionChanged();
    Player.cbOneStep.Value = 0;
    Player.CmdTrackMoose_Click();
    EXPECT_EQ(Legs(), (LegList{{3, 4}, {4, 5}}));
}

TEST_F(TrackPlayer, The_play_of_a_new_selection_that_ended_a_play_begins_a_fresh_path) {
    for (const int oneStep : {0, 1}) {
        AddTrack({0, 1, 2, 3, 4, 5});
        Layer->Select({0, 1, 2});
        Load(5);
        Player.CBKeepGraphic.Value = 1;
        Player.cbOneStep.Value = oneStep;
        bool changed = false;
        Host.SetOnYield([&] {
            if (std::exchange(changed, true)) return;
            Layer->Select({3, 4, 5});
            Application->Doc().Listener()->SelectionChanged();
        });
        Player.CmdTrackMoose_Click();
        EXPECT_EQ(Legs(), (LegList{{0, 1}}));
        EXPECT_EQ(Player.Slider.Value, 0);
        Player.cbOneStep.Value = 0;
        Player.CmdTrackMoose_Click();
        EXPECT_EQ(Legs(), (LegList{{3, 4}, {4, 5}}));
    }
}

TEST_F(TrackPlayer, A_stop_after_a_new_selection_keeps_the_path) {
    AddTrack({0, 1, 2, 3});
    Layer->Select({0, 1});
    Load(3);
    Player.CBKeepGraphic.Value = 1;
    Player.CmbStep_Click();
    Layer->Select({2, 3});
    Application->Doc().Listener()->SelectionChanged();
    Player.cmdStop_Click();
    Player.CmdTrackMoose_Click();
    EXPECT_EQ(Legs(), (LegList{{0, 1}, {2, 3}}));
}

TEST_F(TrackPlayer, A_new_selection_while_a_leg_is_asked_about_leaves_it_undrawn) {
    AddTrack({0, 5, 6, 7});
    Layer->Select({0, 5});
    Load(7);
    Messages.AlwaysAnswer(Topic::kOutOfSequence, Answer::kYes);
    Messages.SetOnShow([&](const MessageBox& box) {
        if (box.Text != kOutOfSequence) return;
        Layer->Select({6, 7});
        Application->Doc().Listener()->SelectionChanged();
    });
    Player.CmbStep_Click();
    EXPECT_TRUE(Legs().empty());
    Player.CmbStep_Click();
    EXPECT_EQ(Legs(), (LegList{{6, 7}}));
}

TEST_F(TrackPlayer, A_new_selection_without_a_point_layer) {
    AddTrack({0, 1});
    Load(1);
    Application->Doc().SetSelectedLayer(std::nullopt);
    Player.SelectionChanged();
    EXPECT_EQ(Messages.Texts(), Texts{"You must select a point layer and restart the Display Tracks Tool"});
    EXPECT_EQ(Messages.Last().Title, "Display Tracks");
    Player.CmbStep_Click();
    EXPECT_EQ(Messages.Last().Text, "No more steps forward.");
}

TEST_F(TrackPlayer, A_new_selection_in_a_layer_of_lines) {
    AddTrack({0, 1});
    Load(1);
    AddLayer({}, utm15(), ShapeType::kPolyline);
    Player.SelectionChanged();
    EXPECT_EQ(Messages.Texts(), Texts{"You must select a point layer and restart the Display Tracks Tool"});
    EXPECT_TRUE(Player.Fixes().empty());
    EXPECT_EQ(Player.GetSelectionFromActiveLayer(), nullptr);
    EXPECT_EQ(Messages.Last().Text, kRestart);
    EXPECT_EQ(Messages.Last().Title, "Display Tracks");
}

TEST_F(TrackPlayer, A_slider_without_fixes_shows_nothing) {
    AddTrack({0, 1});
    Load(1);
    const std::string caption = Player.lblfix.Caption;
    for (const std::int32_t position : {2, -1}) {
        Player.Slider.Value = position;
        Player.Slider_Change();
    }
    EXPECT_EQ(Player.lblfix.Caption, caption);
    EXPECT_TRUE(Messages.Boxes().empty());
}

TEST_F(TrackPlayer, All_fixes_of_no_layer_ask_for_a_restart) {
    AddTrack({0, 1});
    Load(1);
    Application->Doc().SetSelectedLayer(std::nullopt);
    EXPECT_EQ(Player.getAndSelectAllFromActiveLayer(), nullptr);
    EXPECT_EQ(Messages.Texts(), Texts{kRestart});
    EXPECT_EQ(Messages.Last().Title, "Display Tracks");
}

TEST_F(TrackPlayer, An_empty_selection_asks_for_a_restart) {
    AddTrack({0, 1});
    Load(1);
    Layer->Select({});
    Player.SelectionChanged();
    EXPECT_EQ(Messages.Texts(), Texts{kRestart});
}

TEST_F(TrackPlayer, Members_before_loading_report_under_their_own_labels) {
    Player.Form_Load();
    Player.SelectionChanged();
    Player.GetCollectionFromActiveLayer();
    Player.GetSelectionFromActiveLayer();
    Player.getAndSelectAllFromActiveLayer();
    Player.DeleteMooseTracks();
    Player.DrawMooseLine({}, {}, true);
    Player.Form_Unload();
    Player.Form_Terminate();
    EXPECT_EQ(Messages.Texts(),
              (Texts{"Form_Load sub Error number: 91", "Form_Load sub Error number: 91",
                     "GetSelectionFromActiveLayer Error number: 91", "GetSelectionFromActiveLayer Error number: 91",
                     "getandselectallfromactivelayer sub Error number: 91", "DeleteMTracks sub Error number: 91",
                     "DrawMLine Error number: 91"}));
}

TEST_F(TrackPlayer, Graphics_that_cannot_be_refreshed_report_under_the_label_of_the_procedure) {
    AddTrack({0, 1});
    Load(1);
    DrawnGraphics().OnRefresh = [] { Raise(error_number::kInvalidCall); };
    Player.cmdDeleteGraphic_Click();
    Player.setupTrackMoose(false, 0.01, false);
    Player.Form_Unload();
    EXPECT_EQ(Messages.Texts(), (Texts{"cmdDeleteGraphic_click Error number: 5", "SetupTrackM sub Error number: 5",
                                       "Form_Unload sub Error number: 5"}));
    DrawnGraphics().OnRefresh = nullptr;
}

TEST_F(TrackPlayer, Fixes_that_cannot_be_read_are_reported) {
    auto& table = AddTrack({0, 1});
    table.SetBeforeFind([] { Raise(error_number::kDeviceIo); });
    Load(1);
    EXPECT_EQ(Messages.Texts(), Texts{"GetCollectionFromActiveLayer Error number: 57"});
    EXPECT_TRUE(Player.Fixes().empty());
    EXPECT_EQ(Player.lblfix.Caption, "0/0");
}

// Saving

class TrackExport : public TrackPlayer {
protected:
    void Draw(const std::vector<std::int64_t>& oids) {
        AddTrack(oids);
        Load(oids.back());
        Player.CBKeepGraphic.Value = 1;
        for (std::size_t i = 1; i < oids.size(); ++i) Player.CmbStep_Click();
    }
};

TEST_F(TrackExport, Nothing_drawn) {
    AddTrack({0, 1});
    Load(1);
    Player.CmdSaveTravel_Click();
    EXPECT_EQ(Messages.Texts(), Texts{"Please add a track"});
    EXPECT_EQ(Messages.Last().Title, "");
    EXPECT_TRUE(Dialogs.Shown().empty());
}

TEST_F(TrackExport, The_drawn_legs_become_a_line_shapefile_on_the_map) {
    Draw({0, 1, 2});
    Dialogs.WillChoose("/data/moose");
    Map().SetOnAddDataset([&](const auto&) { Application->Doc().Listener()->ContentsChanged(); });
    Player.CmdSaveTravel_Click();
    EXPECT_TRUE(Messages.Boxes().empty());
    EXPECT_EQ(Map().AddedDatasets(), std::vector<std::filesystem::path>{"/data/moose.shp"});
    const auto saved = Shapefiles.Find("/data", "moose");
    ASSERT_NE(saved, nullptr);
    EXPECT_EQ(saved->Shape(), ShapeType::kPolyline);
    EXPECT_EQ(saved->Reference(), utm15());
    EXPECT_EQ(saved->OIDs().size(), 2U);
    EXPECT_EQ(saved->ValueOf(0, "Id"), FieldValue(std::int64_t{1}));
    EXPECT_EQ(saved->ValueOf(1, "Id"), FieldValue(std::int64_t{2}));
    const auto rows = saved->Find({});
    EXPECT_EQ(rows->NextFeature()->Shape().Parts, (std::vector<std::vector<Point>>{{Place(0), Place(1)}}));
    EXPECT_EQ(rows->NextFeature()->Shape().Parts, (std::vector<std::vector<Point>>{{Place(1), Place(2)}}));
    EXPECT_EQ(Dialogs.Shown().at(0).Filter, "Shapefiles (*.shp)|*.shp");
}

TEST_F(TrackExport, The_layer_of_the_track_itself_asks_for_no_restart) {
    Draw({0, 1, 2});
    Dialogs.WillChoose("/data/track");
    int added = 0;
    Map().SetOnAddDataset([&](const std::filesystem::path&) {
        ++added;
        Player.ContentsChanged();
        Player.FocusMapChanged();
        Player.SelectionChanged();
    });
    Player.CmdSaveTravel_Click();
    EXPECT_EQ(added, 1);
    EXPECT_TRUE(Messages.Boxes().empty());
    EXPECT_EQ(Player.Slider.Value, 2);
}

TEST_F(TrackExport, The_path_of_a_removed_layer_can_be_saved) {
    Draw({0, 1});
    Layer->SetRemoved();
    Application->Doc().SetSelectedLayer(std::nullopt);
    Player.ContentsChanged();
    EXPECT_EQ(Player.MakeGeometryDef1().Reference, utm15());
    Dialogs.WillChoose("/out/track.shp");
    Player.CmdSaveTravel_Click();
    EXPECT_EQ(Messages.Texts(), Texts{"Feature Layer changed. Please restart the display tracks tool."});
}

TEST_F(TrackExport, A_cancelled_dialog_saves_nothing) {
    Draw({0, 1});
    Dialogs.WillChoose(std::nullopt);
    Player.CmdSaveTravel_Click();
    EXPECT_TRUE(Messages.Boxes().empty());
    EXPECT_TRUE(Shapefiles.Published().empty());
}

TEST_F(TrackExport, A_name_that_is_taken_keeps_its_file) {
    Draw({0, 1});
    Dialogs.WillChoose("/data/moose.SHP");
    Player.CmdSaveTravel_Click();
    EXPECT_EQ(Map().AddedDatasets(), std::vector<std::filesystem::path>{"/data/moose.shp"});
    const auto first = Shapefiles.Find("/data", "moose");
    Dialogs.WillChoose("/data/moose.shp");
    Player.CmdSaveTravel_Click();
    EXPECT_EQ(Messages.Texts(), Texts{"/data/moose.shp exists already. Please choose another name."});
    EXPECT_EQ(Shapefiles.Find("/data", "moose"), first);
    EXPECT_EQ(Shapefiles.Unpublished(), 0U);
}

TEST_F(TrackExport, Names_with_several_points_keep_them) {
    Draw({0, 1});
    Dialogs.WillChoose("/data/moose.2003");
    Player.CmdSaveTravel_Click();
    EXPECT_EQ(Shapefiles.Published(), std::vector<std::filesystem::path>{"/data/moose.2003"});
}

TEST_F(TrackExport, A_class_that_cannot_be_made_is_reported_with_its_path) {
    Draw({0, 1});
    Dialogs.WillChoose("/data/a*b.shp");
    Player.CmdSaveTravel_Click();
    EXPECT_EQ(Messages.Texts(), (Texts{"Createfeatureclass1 sub ERROR: /data/a*b.shp,5",
                                       "ConvertGraphic2Shapefile sub ERROR: /data/a*b.shp,91"}));
    EXPECT_TRUE(Shapefiles.Published().empty());
}

TEST_F(TrackExport, A_layer_that_cannot_be_added_is_reported_and_the_file_stays) {
    Draw({0, 1});
    Dialogs.WillChoose("/data/moose.shp");
    Map().SetOnAddDataset([](const auto&) { Raise(error_number::kPermissionDenied); });
    Player.CmdSaveTravel_Click();
    EXPECT_EQ(Messages.Texts(), Texts{"Addshapefile sub ERROR: /data/moose.shp,70"});
    EXPECT_NE(Shapefiles.Find("/data", "moose"), nullptr);
    // The next change of the map is told again.
    Player.ContentsChanged();
    EXPECT_EQ(Messages.Boxes().size(), 2U);
}

TEST_F(TrackExport, The_geometry_of_a_track_without_a_layer) {
    Player.MakeGeometryDef1();
    EXPECT_EQ(Messages.Texts(), Texts{"Createfeatureclass1 sub ERROR: ,91"});
}

}  // namespace
}  // namespace wxl::tests
