#include "movement/MOLE.h"

#include "movement/count_limit.h"
#include "movement/error_labels.h"
#include "movement/selected_layer.h"
#include "platform/guarded.h"

namespace wxl::movement {

using namespace wxl::platform;
namespace labels = error_labels::display_travel;

MOLE::MOLE(const Services& services, ITrackPlayerWindow& window) : m_services(services), m_window(window) {}

CommandProperties MOLE::Properties() const {
    return {.Name = "MOLE", .Caption = "Display Travel", .Tooltip = "Display Travel", .Message = "Display Travel"};
}

void MOLE::OnCreate(const std::shared_ptr<IApplication>& hook) {
    m_application = hook;
    m_document = hook ? hook->Document() : nullptr;
}

void MOLE::OnClick() {
    Guarded(*m_services.Messages, labels::kOnClick, [&] {
        IMessages& messages = *m_services.Messages;
        if (!m_document) Raise(error_number::kObjectNotSet);
        const auto layer = selected_feature_layer(*m_document);
        if (!layer || feature_class_of(*layer)->Shape() != ShapeType::kPoint) {
            messages.Show({.Text = "You must select a point layer",
                           .Title = "Display Tracks",
                           .Kind = platform::BoxKind::kRefusal});
            return;
        }
        const auto fixes = selection_of_selected_layer(*m_document)->Find({.Where = std::nullopt, .WithShape = false});
        if (!fixes->NextFeature()) {
            messages.Show({.Text = "You must select the points to track", .Kind = platform::BoxKind::kRefusal});
            return;
        }
        if (!fixes->NextFeature()) {
            messages.Show(
                {.Text = "You must select more then one point to track", .Kind = platform::BoxKind::kRefusal});
            return;
        }
        const auto lastFID = getLastFID();
        if (!lastFID) return;
        frmOVI player(m_services);
        player.SetBeyondLimits(m_beyondLimits);
        player.SetApplication(m_application);
        player.SetLastFID(*lastFID);
        m_window.ShowTrackPlayer(player);
        player.Form_Terminate();
    });
}

std::optional<std::int64_t> MOLE::getLastFID() {
    return Guarded(*m_services.Messages, labels::kGetLastFID, [&]() -> std::optional<std::int64_t> {
        if (!m_document) Raise(error_number::kObjectNotSet);
        const auto layer = selected_feature_layer(*m_document);
        if (!layer) Raise(error_number::kObjectNotSet);
        const auto all = feature_class_of(*layer)->Find({.Where = std::nullopt, .WithShape = false});
        return CountLimit(m_beyondLimits).Checked(last_fid(*all));
    });
}

}  // namespace wxl::movement
