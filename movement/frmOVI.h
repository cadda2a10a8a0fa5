#pragma once
#include "movement/count_limit.h"
#include "movement/track_fixes.h"
#include "platform/controls.h"
#include "platform/map.h"
#include "platform/services.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace wxl::movement {

class frmOVI;

/// Puts the track player on screen.
class ITrackPlayerWindow {
public:
    virtual ~ITrackPlayerWindow() = default;

    /// Calls Form_Load, shows the form modally beside the map (which it must not hide), and returns once the user has
    /// closed it and Form_Unload was called. Form_Unload also ends a play that is still going on.
    virtual void ShowTrackPlayer(frmOVI& form) = 0;
};

/// The track player "Display Travel": steps or plays through the selected fixes of the selected point layer and draws
/// the leg from each fix to the next on the map.
///
/// Position p of the Slider is the p-th selected fix by object ID, so it stands for the object ID first + p where the
/// selected ones are consecutive; over a gap the step goes on to the next selected fix and asks before it draws the
/// leg. The controls are plain values: change one, then call its handler. Handlers report faults and never throw.
class frmOVI final : public platform::IMapEvents {
public:
    /// Services used: messages, dialogs, host, clock, shapefiles. They must outlive the form.
    explicit frmOVI(const platform::Services& services);
    ~frmOVI() override;
    frmOVI(const frmOVI&) = delete;
    frmOVI& operator=(const frmOVI&) = delete;

    const std::string Caption = "Display Travel";
    platform::Button CmdTrackMoose{"Display Travel"};
    platform::Button CmbStep{"Step Forward"};
    platform::Button cmdStepBack{"Step Back"};
    platform::Button cmdStop{"Stop"};
    platform::CheckBox cbOneStep{"One Step at a Time"};
    platform::CheckBox CBKeepGraphic{" Keep Travel Path"};
    platform::Button cmdDeleteGraphic{"Delete Travel Path"};
    platform::Button CmdSaveTravel{"Save Travel"};
    platform::Slider Slider{0, 0, 0};     ///< the position along the track
    platform::Slider SlideSec{0, 99, 0};  ///< the playback delay: 0.01 s and 0.01 s more per position
    platform::TextBox TxtSec{".01"};      ///< the playback delay in seconds
    platform::Label Label2{"Display Speed (sec)"};
    platform::Label Label1{"Fix"};
    platform::Label lblfix{"0/0"};  ///< object ID of the fix + 1 / last object ID of the layer + 1
    platform::Label lblStats{"Meters per sec: 0 Distance:0"};
    platform::Label LblDateAndTime1{"Date:"};

    // Around the map, which cannot be reached while the form is open
    platform::Button cmdZoomIn{"Zoom In"};
    platform::Button cmdZoomOut{"Zoom Out"};
    platform::Button cmdZoomTrack{"Zoom to Track"};
    platform::CheckBox chkFollow{"Follow the Track", 1};  ///< whether the map moves when a leg ends outside the view
    platform::Label lblSelected{""};                      ///< "308 fixes selected"
    platform::Label lblNotice{""};  ///< what stands in the way of this fix or of the whole track; "" where nothing does

    // Handed over before the form is shown
    void SetApplication(const std::shared_ptr<platform::IApplication>& application) { m_application = application; }

    /// The object ID of the last feature of the layer.
    void SetLastFID(std::int64_t lastFID) { m_lastFID = lastFID; }

    /// Lifts the limit of object IDs to 32767. Off at first.
    void SetBeyondLimits(bool value) { m_limit = CountLimit(value); }

    // Handlers of the controls
    /// Plays from the present position to the end or to Stop, or makes one step with "One Step at a Time" checked. A
    /// press while it plays does nothing.
    void CmdTrackMoose_Click();
    void CmbStep_Click();
    void cmdStepBack_Click();
    void cmdStop_Click();
    void cbOneStep_Click();
    void CBKeepGraphic_Click();
    void cmdDeleteGraphic_Click();
    void CmdSaveTravel_Click();

    /// The Slider was moved by hand: shows the fix there; the next step starts from it.
    void Slider_Change();
    void SlideSec_Change();

    /// Nearer to the fix shown last, to half of the width; the opposite; and so that all selected fixes are on screen.
    void cmdZoomIn_Click();
    void cmdZoomOut_Click();
    void cmdZoomTrack_Click();
    void Form_Load();

    /// Ends a play, takes the track off the map and stops listening to it. May be called twice.
    void Form_Unload();
    void Form_Terminate();

    // Map events while the form is open
    /// Without its layer the player has nothing to play any more; the drawn legs stay and can be saved.
    void ContentsChanged() override;
    void FocusMapChanged() override;

    /// Rebuilds the player from the new selection; a play ends. The drawn path stays, unless the selection is in
    /// another coordinate system.
    void SelectionChanged() override;

    /// Prepares the map's graphics for a play and plays: after a Stop the drawn path stays, otherwise it is removed.
    void setupTrackMoose(bool keepPath, double delaySeconds, bool oneStep);

    /// Steps forward until Stop or the end, waiting after each drawn leg.
    void Auto_Track_Moose(bool keepPath, double delaySeconds, bool oneStep);

    /// The selected point layer, whose selected fixes become the player's; null after a message or reported fault.
    std::shared_ptr<platform::IFeatureLayer> GetCollectionFromActiveLayer();

    /// The selection of the selected layer; null after a message or reported fault.
    std::shared_ptr<platform::ISelectionSet> GetSelectionFromActiveLayer();

    /// A cursor over all features of the selected layer, without shapes; null after a message or reported fault.
    std::unique_ptr<platform::IFeatureCursor> getAndSelectAllFromActiveLayer();

    /// Removes the drawn legs from the map.
    void DeleteMooseTracks();

    /// Draws the leg between two fixes; without `keepPath` it replaces the legs drawn so far. While the track is
    /// followed, the map pans when the leg's end lies outside the view.
    void DrawMooseLine(const TrackFix& previous, const TrackFix& current, bool keepPath);

    /// Saves the drawn legs as a line shapefile under a name that the user chooses, and adds it to the map.
    void ConvertGraphics2Shapefile();

    /// A new, unpublished class of lines with the field "Id"; null after a reported fault.
    std::shared_ptr<platform::IFeatureClass> CreateFeatureClass1(const std::filesystem::path& shapefile);

    /// What the geometry of the saved track is: lines in the layer's coordinate system, no fields.
    platform::FeatureClassDefinition MakeGeometryDef1();
    void AddShapeFile(const std::filesystem::path& shapefile);

    /// The fixes that can be stepped through, and the legs drawn so far.
    const std::vector<TrackFix>& Fixes() const { return m_fixes; }
    const std::vector<platform::TrackLeg>& Legs() const { return m_legs; }

private:
    platform::IMxDocument& Document();
    platform::IMap& Map();
    void Rebuild();
    void ForgetFixes();
    void DrawIn(const platform::SpatialReference& reference);
    void EndWithLayer();
    void EnablePlaying(bool enabled);
    void ZoomAround(double factor);
    double DelaySeconds();
    bool HasFix(std::int64_t position) const;
    TrackFix FixAt(std::int64_t position) const;
    std::string FixText(std::int64_t fid) const;
    void ShowLabels(const TrackFix& fix);
    bool ConfirmLeg(const TrackFix& current);
    bool StepTo(std::int32_t position, bool keepPath);
    bool IsPlaying(std::uint64_t track) const;
    void Wait(double seconds, std::uint64_t track);
    void RefreshGraphics();
    void WriteLegs(platform::IFeatureClass& features) const;

    platform::Services m_services;
    CountLimit m_limit;
    std::shared_ptr<platform::IApplication> m_application;
    std::shared_ptr<platform::IMxDocument> m_document;
    std::shared_ptr<platform::IMap> m_map;
    std::unique_ptr<platform::IGraphicsContainer> m_graphics;
    std::shared_ptr<platform::IFeatureLayer> m_layer;
    std::string m_layerName;
    std::optional<platform::SpatialReference> m_reference;  ///< of the drawn legs; none while nothing can be drawn
    std::vector<TrackFix> m_fixes;
    std::optional<TrackFix> m_previous;  ///< the fix shown last
    std::vector<platform::TrackLeg> m_legs;
    std::int64_t m_lastFID = 0;
    bool m_keepGraphic = false;
    bool m_oneStep = false;
    bool m_stop = false;
    std::uint64_t m_trackNumber = 0;  ///< counts the selections: a play ends with its own
    bool m_playing = false;
    bool m_addingOwnLayer = false;
};

}  // namespace wxl::movement
