#include "movement/frmOVI.h"

#include "movement/error_labels.h"
#include "movement/flag_up.h"
#include "movement/play_delay.h"
#include "movement/selected_layer.h"
#include "platform/guarded.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

namespace wxl::movement {

using namespace wxl::platform;
namespace labels = error_labels::track_player;

namespace {

constexpr const char* kTitle = "Display Tracks";
constexpr const char* kRestart = "You must select a point layer and restart the display tracks tool.";
constexpr const char* kNoPlace =
    "This fix has no place in the project's coordinate system: its legs are not drawn, but saved.";
constexpr const char* kPathTakenOff = "The path drawn before was in another coordinate system: it is off the map.";

std::string selected_text(std::size_t fixes) {
    return std::to_string(fixes) + (fixes == 1 ? " fix selected" : " fixes selected");
}

}  // namespace

frmOVI::frmOVI(const Services& services) : m_services(services) {}

frmOVI::~frmOVI() {
    Form_Unload();
}

// Opening and closing

void frmOVI::Form_Load() {
    Guarded(*m_services.Messages, labels::kFormLoad, [&] {
        if (!m_application) Raise(error_number::kObjectNotSet);
        m_document = m_application->Document();
        m_map = Document().FocusMap();
        Document().SetListener(this);
        m_stop = false;
        Rebuild();
    });
}

void frmOVI::Form_Unload() {
    Guarded(*m_services.Messages, labels::kFormUnload, [&] {
        m_stop = true;
        if (m_document) m_document->SetListener(nullptr);
        if (m_graphics) {
            DeleteMooseTracks();
            RefreshGraphics();
        }
        m_graphics.reset();
        m_reference.reset();
        m_map.reset();
        m_document.reset();
        ForgetFixes();
    });
}

void frmOVI::Form_Terminate() {
    Guarded(*m_services.Messages, labels::kFormTerminate, [&] {
        Form_Unload();
        m_application.reset();
    });
}

/// Sets the player up from the present selection.
void frmOVI::Rebuild() {
    ForgetFixes();
    lblStats.Caption = "Meters per sec: 0 Distance: 0";
    LblDateAndTime1.Caption = "Date:";
    lblfix.Caption = "0/0";
    lblNotice.Caption.clear();
    const bool found = GetCollectionFromActiveLayer() != nullptr;
    lblSelected.Caption = selected_text(m_fixes.size());
    if (found)
        DrawIn(feature_class_of(*m_layer)->Reference());
    else if (!m_graphics)
        DrawIn({});
    EnablePlaying(true);
    if (m_fixes.empty()) return;
    Slider.Maximum = static_cast<std::int32_t>(m_fixes.size()) - 1;
    m_previous = FixAt(0);
    lblfix.Caption = FixText(m_previous->FID);
}

/// Legs from now on are in this coordinate system; those of another one go.
void frmOVI::DrawIn(const SpatialReference& reference) {
    if (m_graphics && m_reference == reference) return;
    if (!m_legs.empty()) {
        DeleteMooseTracks();
        RefreshGraphics();
        lblNotice.Caption = kPathTakenOff;
    }
    m_reference = reference;
    m_graphics = Map().NewGraphics(reference);
}

/// Nothing can be played without a layer; what is drawn stays.
void frmOVI::EndWithLayer() {
    ++m_trackNumber;
    ForgetFixes();
    lblSelected.Caption = selected_text(0);
    EnablePlaying(false);
    lblNotice.Caption = "The layer \"" + m_layerName +
                        "\" was removed from the map: its track ends here. The drawn path can still be saved.";
}

void frmOVI::EnablePlaying(bool enabled) {
    for (Button* button : {&CmdTrackMoose, &cmdStop, &CmbStep, &cmdStepBack, &cmdZoomTrack}) button->Enabled = enabled;
    Slider.Enabled = enabled;
}

void frmOVI::ForgetFixes() {
    m_fixes.clear();
    m_previous.reset();
    m_layer.reset();
    Slider.Minimum = 0;
    Slider.Maximum = 0;
    Slider.Value = 0;
}

// Map events

void frmOVI::ContentsChanged() {
    if (m_addingOwnLayer) return;
    if (m_layer && m_layer->IsRemoved()) EndWithLayer();
    m_services.Messages->Show({.Text = "Feature Layer changed. Please restart the display tracks tool."});
}

void frmOVI::FocusMapChanged() {
    if (m_addingOwnLayer) return;
    m_services.Messages->Show({.Text = "Maps changed. Please restart the display tracks tool."});
}

void frmOVI::SelectionChanged() {
    if (m_addingOwnLayer) return;
    Guarded(*m_services.Messages, labels::kFormLoad, [&] {
        ++m_trackNumber;
        m_stop = false;
        const auto layer = selected_feature_layer(Document());
        if (!layer || feature_class_of(*layer)->Shape() != ShapeType::kPoint) {
            ForgetFixes();
            m_services.Messages->Show(
                {.Text = "You must select a point layer and restart the Display Tracks Tool", .Title = kTitle});
            return;
        }
        if (const auto all = getAndSelectAllFromActiveLayer()) m_lastFID = m_limit.Checked(last_fid(*all));
        Rebuild();
    });
}

// Stepping and playing

void frmOVI::CmbStep_Click() {
    GuardedWithAdvice(*m_services.Messages, labels::kStep, labels::kAdvice, [&] {
        CBKeepGraphic_Click();
        const std::int32_t next = Slider.Value + 1;
        if (!HasFix(next)) {
            m_services.Messages->Show({.Text = "No more steps forward.", .Title = kTitle});
            return;
        }
        StepTo(next, m_keepGraphic);
    });
}

void frmOVI::cmdStepBack_Click() {
    GuardedWithAdvice(*m_services.Messages, labels::kStepBack, labels::kAdvice, [&] {
        CBKeepGraphic_Click();
        const std::int32_t next = Slider.Value - 1;
        if (!HasFix(next)) {
            m_services.Messages->Show({.Text = "No more steps back.", .Title = kTitle});
            return;
        }
        StepTo(next, m_keepGraphic);
    });
}

void frmOVI::CmdTrackMoose_Click() {
    Guarded(*m_services.Messages, labels::kTrack, [&] {
        if (m_playing) return;
        CBKeepGraphic_Click();
        const double delay = DelaySeconds();
        cbOneStep_Click();
        setupTrackMoose(m_keepGraphic, delay, m_oneStep);
    });
}

/// The typed delay; RuntimeError 13, and a sentence, for a text that is not a number.
double frmOVI::DelaySeconds() {
    try {
        return NumberFromText(TxtSec.Text);
    } catch (const RuntimeError&) {
        lblNotice.Caption = "\"" + TxtSec.Text + "\" is not a number of seconds. Please write a point, as in 0.5.";
        throw;
    }
}

void frmOVI::setupTrackMoose(bool keepPath, double delaySeconds, bool oneStep) {
    Guarded(*m_services.Messages, labels::kSetupTrack, [&] {
        if (!GetSelectionFromActiveLayer()) return;
        if (!m_graphics) DrawIn(feature_class_of(*selected_feature_layer(Document()))->Reference());
        if (!m_stop) {
            DeleteMooseTracks();
            RefreshGraphics();
        }
        m_stop = false;
        Auto_Track_Moose(keepPath, delaySeconds, oneStep);
    });
}

void frmOVI::Auto_Track_Moose(bool keepPath, double delaySeconds, bool oneStep) {
    GuardedWithAdvice(*m_services.Messages, labels::kAutoTrack, labels::kAdvice, [&] {
        const FlagUp playing(m_playing);
        const std::uint64_t track = m_trackNumber;
        while (IsPlaying(track)) {
            const std::int32_t next = Slider.Value + 1;
            if (!HasFix(next)) {
                m_services.Messages->Show({.Text = "No more steps. Please reset.", .Title = kTitle});
                return;
            }
            const bool drawn = StepTo(next, keepPath);
            // A single step pauses as Stop does, so that the next one goes on from here.
            if (oneStep && m_trackNumber == track) m_stop = true;
            Wait(drawn && !oneStep ? delaySeconds : 0.0, track);
        }
    });
}

/// Whether neither Stop nor a new selection has ended the play of this track.
bool frmOVI::IsPlaying(std::uint64_t track) const {
    return !m_stop && m_trackNumber == track;
}

/// Gives the host its turns until the delay has passed or the play was ended.
void frmOVI::Wait(double seconds, std::uint64_t track) {
    PlayDelay delay(*m_services.Clock, seconds);
    do {
        m_services.Host->WaitForEvents(delay.Remaining());
    } while (IsPlaying(track) && !delay.HasPassed());
}

void frmOVI::cmdStop_Click() {
    Guarded(*m_services.Messages, labels::kStop, [&] { m_stop = true; });
}

void frmOVI::cbOneStep_Click() {
    Guarded(*m_services.Messages, labels::kOneStep, [&] { m_oneStep = cbOneStep.Value != 0; });
}

void frmOVI::CBKeepGraphic_Click() {
    m_keepGraphic = CBKeepGraphic.Value != 0;
}

void frmOVI::cmdDeleteGraphic_Click() {
    Guarded(*m_services.Messages, labels::kDeleteGraphic, [&] {
        DeleteMooseTracks();
        RefreshGraphics();
    });
}

void frmOVI::Slider_Change() {
    GuardedWithAdvice(*m_services.Messages, labels::kStep, labels::kAdvice, [&] {
        if (!HasFix(Slider.Value)) return;
        m_previous = FixAt(Slider.Value);
        ShowLabels(*m_previous);
    });
}

void frmOVI::SlideSec_Change() {
    Guarded(*m_services.Messages, labels::kSlideSec, [&] { TxtSec.Text = NumberText(SlideSec.Value * 0.01 + 0.01); });
}

void frmOVI::cmdZoomIn_Click() {
    ZoomAround(0.5);
}

void frmOVI::cmdZoomOut_Click() {
    ZoomAround(2.0);
}

void frmOVI::ZoomAround(double factor) {
    Guarded(*m_services.Messages, labels::kZoom, [&] {
        if (m_graphics && m_previous && m_previous->Location) m_graphics->Zoom(factor, *m_previous->Location);
    });
}

void frmOVI::cmdZoomTrack_Click() {
    Guarded(*m_services.Messages, labels::kZoom, [&] {
        std::vector<Point> places;
        for (const TrackFix& fix : m_fixes)
            if (fix.Location) places.push_back(*fix.Location);
        if (m_graphics && !places.empty()) m_graphics->ZoomTo(places);
    });
}

bool frmOVI::HasFix(std::int64_t position) const {
    return position >= 0 && position < static_cast<std::int64_t>(m_fixes.size());
}

/// The fix at a position; RuntimeError 6 when its object ID exceeds the limit.
TrackFix frmOVI::FixAt(std::int64_t position) const {
    const TrackFix& fix = m_fixes.at(static_cast<std::size_t>(position));
    m_limit.Checked(fix.FID);
    return fix;
}

std::string frmOVI::FixText(std::int64_t fid) const {
    return std::to_string(m_limit.Checked(fid + 1)) + "/" + std::to_string(m_limit.Checked(m_lastFID + 1));
}

void frmOVI::ShowLabels(const TrackFix& fix) {
    lblStats.Caption = stats_text(fix);
    LblDateAndTime1.Caption = date_and_time_text(fix);
    lblfix.Caption = FixText(fix.FID);
    const bool placed = !m_graphics || !fix.Location || m_graphics->CanPlace(*fix.Location);
    lblNotice.Caption = placed ? "" : kNoPlace;
}

/// Asks before a leg over missing fixes is drawn. Fixes met on the way back are never missing.
bool frmOVI::ConfirmLeg(const TrackFix& current) {
    if (!m_previous || current.FID <= m_previous->FID + 1) return true;
    return m_services.Messages->Show(
               {.Text = "This track segment is out of sequence.  Do you want to draw the track segment?",
                .Title = kTitle,
                .Choice = Buttons::kYesNo,
                .About = Topic::kOutOfSequence,
                .Kind = platform::BoxKind::kQuestion}) == Answer::kYes;
}

/// Shows the fix at a position that exists and draws the leg to it; whether the leg was drawn.
bool frmOVI::StepTo(std::int32_t position, bool keepPath) {
    // Copies, because a box or a turn of the host can bring a new selection meanwhile.
    Slider.Value = position;
    const TrackFix current = FixAt(position);
    ShowLabels(current);
    const std::optional<TrackFix> previous = m_previous;
    const std::uint64_t track = m_trackNumber;
    const bool draw = previous && ConfirmLeg(current);
    if (m_trackNumber != track) return false;
    m_previous = current;
    if (draw) DrawMooseLine(*previous, current, keepPath);
    return draw;
}

// Drawing

void frmOVI::DrawMooseLine(const TrackFix& previous, const TrackFix& current, bool keepPath) {
    Guarded(*m_services.Messages, labels::kDrawLine, [&] {
        if (!m_graphics || !previous.Location || !current.Location) Raise(error_number::kObjectNotSet);
        if (!keepPath) DeleteMooseTracks();
        const TrackLeg leg{*previous.Location, *current.Location};
        m_graphics->AddLeg(leg);
        m_legs.push_back(leg);
        if (chkFollow.Value != 0 && !m_graphics->IsInView(leg.To)) m_graphics->PanTo(leg.To);
        RefreshGraphics();
    });
}

void frmOVI::DeleteMooseTracks() {
    Guarded(*m_services.Messages, labels::kDeleteTracks, [&] {
        if (!m_graphics) Raise(error_number::kObjectNotSet);
        m_graphics->DeleteLegs();
        m_legs.clear();
    });
}

void frmOVI::RefreshGraphics() {
    if (m_graphics) m_graphics->Refresh();
}

// Look-ups

std::shared_ptr<IFeatureLayer> frmOVI::GetCollectionFromActiveLayer() {
    return Guarded(*m_services.Messages, labels::kGetCollection, [&]() -> std::shared_ptr<IFeatureLayer> {
        const auto selection = GetSelectionFromActiveLayer();
        if (!selection) return nullptr;
        m_layer = selected_feature_layer(Document());
        m_layerName = m_layer->Name();
        m_fixes = gather_fixes(*feature_class_of(*m_layer), *selection);
        return m_layer;
    });
}

std::shared_ptr<ISelectionSet> frmOVI::GetSelectionFromActiveLayer() {
    return Guarded(*m_services.Messages, labels::kGetSelection, [&]() -> std::shared_ptr<ISelectionSet> {
        const auto layer = selected_feature_layer(Document());
        const bool points = layer && feature_class_of(*layer)->Shape() == ShapeType::kPoint;
        auto selection = points ? layer->Selection() : nullptr;
        if (selection && selection->Count() > 0) return selection;
        m_services.Messages->Show({.Text = kRestart, .Title = kTitle});
        return nullptr;
    });
}

std::unique_ptr<IFeatureCursor> frmOVI::getAndSelectAllFromActiveLayer() {
    return Guarded(*m_services.Messages, labels::kGetAndSelectAll, [&]() -> std::unique_ptr<IFeatureCursor> {
        const auto layer = selected_feature_layer(Document());
        if (layer) return feature_class_of(*layer)->Find({.Where = std::nullopt, .WithShape = false});
        m_services.Messages->Show({.Text = kRestart, .Title = kTitle});
        return nullptr;
    });
}

IMxDocument& frmOVI::Document() {
    if (!m_document) Raise(error_number::kObjectNotSet);
    return *m_document;
}

IMap& frmOVI::Map() {
    if (!m_map) Raise(error_number::kObjectNotSet);
    return *m_map;
}

}  // namespace wxl::movement
