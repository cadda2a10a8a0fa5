#pragma once
// Labels of the error reports of the movement tools, letter for letter: their mixed case and wording are known to users
// and to their notes, so they stay as they are. Each is followed at once by the error number.

namespace wxl::movement::error_labels {

/// Observation fields (OVIOBS).
namespace observation_fields {
inline constexpr const char* kCalcObsFields = "calcobsfields sub Error number: ";
inline constexpr const char* kCalcFeatures = "CalcFeatures sub Error number: ";
inline constexpr const char* kGetSelectionFrom2Layer = "Getselectionfromlayer sub Error number: ";
inline constexpr const char* kGetSelectionFromActiveLayer = "getselectionfromactivelayer Error number: ";
inline constexpr const char* kGetAndSelectAll = "Getandselectallformactivelayer sub Error number: ";
inline constexpr const char* kAddFields = "Addfields sub Error number: ";
inline constexpr const char* kDeleteFields = "DeleteFields Error number: ";
}  // namespace observation_fields

/// Duplicates by Time2 (FIndDupTime2).
namespace time2_duplicates {
inline constexpr const char* kClick = "find and remove dups sub Error number: ";
inline constexpr const char* kCalcFeatures = "CalcFeatures sub Error number: ";
inline constexpr const char* kGetSelectionFrom2Layer = "GetSelectionfromlayer sub Error number: ";
inline constexpr const char* kGetSelectionFromActiveLayer = "Getselectionfromactivelayer sub Error number: ";
}  // namespace time2_duplicates

/// Duplicates by location (FindDupxy).
namespace xy_duplicates {
inline constexpr const char* kClick = "Findandremovedups sub Error number: ";
inline constexpr const char* kCalcFeatures = "Calcfeatures sub Error number: ";
inline constexpr const char* kGetSelectionFrom2Layer = "Getselection sub Error number: ";
inline constexpr const char* kGetSelectionFromActiveLayer = "getselectionfromactivelayer sub Error number: ";
}  // namespace xy_duplicates

/// The command that opens the track player (MOLE).
namespace display_travel {
inline constexpr const char* kOnClick = "Icommand_onclick sub Error number: ";
inline constexpr const char* kGetLastFID = "getlastFID sub Error number: ";
}  // namespace display_travel

/// The track player (frmOVI).
namespace track_player {
inline constexpr const char* kOneStep = "cbOneStep_Click Error number: ";
inline constexpr const char* kDeleteGraphic = "cmdDeleteGraphic_click Error number: ";
inline constexpr const char* kStop = "cmdstop_click Sub Error number: ";
inline constexpr const char* kTrack = "cmdtrackM sub Error number: ";
inline constexpr const char* kSetupTrack = "SetupTrackM sub Error number: ";
inline constexpr const char* kAutoTrack = "Auto_Track_M sub Error number: ";
inline constexpr const char* kStepBack = "cmdstepback sub Error number: ";
inline constexpr const char* kStep = "cmdstep_Click sub Error number: ";
inline constexpr const char* kGetCollection = "GetCollectionFromActiveLayer Error number: ";
inline constexpr const char* kGetSelection = "GetSelectionFromActiveLayer Error number: ";
inline constexpr const char* kGetAndSelectAll = "getandselectallfromactivelayer sub Error number: ";
inline constexpr const char* kDeleteTracks = "DeleteMTracks sub Error number: ";
inline constexpr const char* kFormLoad = "Form_Load sub Error number: ";
inline constexpr const char* kFormTerminate = "Form_Terminate sub Error number: ";
inline constexpr const char* kFormUnload = "Form_Unload sub Error number: ";
inline constexpr const char* kSlideSec = "slideSec_change Error number: ";
inline constexpr const char* kDrawLine = "DrawMLine Error number: ";
inline constexpr const char* kZoom = "zoom sub Error number: ";

/// Stands after the number in the reports of the three stepping procedures.
inline constexpr const char* kAdvice = "Please check your data...";
}  // namespace track_player

/// The export of a track; a detail and a comma stand before the number.
namespace track_export {
inline constexpr const char* kConvertGraphics = "ConvertGraphic2Shapefile sub ERROR: ";
inline constexpr const char* kAddShapeFile = "Addshapefile sub ERROR: ";
inline constexpr const char* kCreateFeatureClass = "Createfeatureclass1 sub ERROR: ";
}  // namespace track_export

}  // namespace wxl::movement::error_labels
