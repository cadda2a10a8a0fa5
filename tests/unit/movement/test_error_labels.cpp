#include "movement/error_labels.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace wxl::tests {
namespace {

namespace labels = movement::error_labels;
using Labels = std::vector<std::string>;

TEST(ErrorLabels, Observation_fields) {
    using namespace labels::observation_fields;
    EXPECT_EQ((Labels{kCalcObsFields, kCalcFeatures, kGetSelectionFrom2Layer, kGetSelectionFromActiveLayer,
                      kGetAndSelectAll, kAddFields, kDeleteFields}),
              (Labels{"calcobsfields sub Error number: ", "CalcFeatures sub Error number: ",
                      "Getselectionfromlayer sub Error number: ", "getselectionfromactivelayer Error number: ",
                      "Getandselectallformactivelayer sub Error number: ", "Addfields sub Error number: ",
                      "DeleteFields Error number: "}));
}

TEST(ErrorLabels, Duplicates_by_time2) {
    using namespace labels::time2_duplicates;
    EXPECT_EQ((Labels{kClick, kCalcFeatures, kGetSelectionFrom2Layer, kGetSelectionFromActiveLayer}),
              (Labels{"find and remove dups sub Error number: ", "CalcFeatures sub Error number: ",
                      "GetSelectionfromlayer sub Error number: ", "Getselectionfromactivelayer sub Error number: "}));
}

TEST(ErrorLabels, Duplicates_by_location) {
    using namespace labels::xy_duplicates;
    EXPECT_EQ((Labels{kClick, kCalcFeatures, kGetSelectionFrom2Layer, kGetSelectionFromActiveLayer}),
              (Labels{"Findandremovedups sub Error number: ", "Calcfeatures sub Error number: ",
                      "Getselection sub Error number: ", "getselectionfromactivelayer sub Error number: "}));
}

TEST(ErrorLabels, Display_travel) {
    using namespace labels::display_travel;
    EXPECT_EQ((Labels{kOnClick, kGetLastFID}),
              (Labels{"Icommand_onclick sub Error number: ", "getlastFID sub Error number: "}));
}

TEST(ErrorLabels, Track_player) {
    using namespace labels::track_player;
    EXPECT_EQ(
        (Labels{kOneStep, kDeleteGraphic, kStop, kTrack, kSetupTrack, kAutoTrack, kStepBack, kStep, kGetCollection,
                kGetSelection, kGetAndSelectAll, kDeleteTracks, kFormLoad, kFormTerminate, kFormUnload, kSlideSec,
                kDrawLine}),
        (Labels{"cbOneStep_Click Error number: ", "cmdDeleteGraphic_click Error number: ",
                "cmdstop_click Sub Error number: ", "cmdtrackM sub Error number: ", "SetupTrackM sub Error number: ",
                "Auto_Track_M sub Error number: ", "cmdstepback sub Error number: ", "cmdstep_Click sub Error number: ",
                "GetCollectionFromActiveLayer Error number: ", "GetSelectionFromActiveLayer Error number: ",
                "getandselectallfromactivelayer sub Error number: ", "DeleteMTracks sub Error number: ",
                "Form_Load sub Error number: ", "Form_Terminate sub Error number: ", "Form_Unload sub Error number: ",
                "slideSec_change Error number: ", "DrawMLine Error number: "}));
    EXPECT_STREQ(kAdvice, "Please check your data...");
}

TEST(ErrorLabels, Track_export) {
    using namespace labels::track_export;
    EXPECT_EQ((Labels{kConvertGraphics, kAddShapeFile, kCreateFeatureClass}),
              (Labels{"ConvertGraphic2Shapefile sub ERROR: ", "Addshapefile sub ERROR: ",
                      "Createfeatureclass1 sub ERROR: "}));
}

}  // namespace
}  // namespace wxl::tests
