#pragma once
#include "movement/frmOVI.h"
#include "platform/commands.h"
#include "platform/services.h"

#include <cstdint>
#include <memory>
#include <optional>

namespace wxl::movement {

/// The command "Display Travel": checks that at least two fixes of a point layer are selected and opens the track
/// player modally. Faults are reported in a box and never thrown.
class MOLE final : public platform::ICommand {
public:
    /// Services used: those of frmOVI. They and the window must outlive the command.
    MOLE(const platform::Services& services, ITrackPlayerWindow& window);

    platform::CommandProperties Properties() const override;
    void OnCreate(const std::shared_ptr<platform::IApplication>& hook) override;
    void OnClick() override;

    /// Lifts the limit of object IDs to 32767. Off at first.
    void SetBeyondLimits(bool value) { m_beyondLimits = value; }

    /// The object ID of the last feature of the selected layer, selected or not; nothing after a reported fault, which
    /// ends the tool.
    std::optional<std::int64_t> getLastFID();

private:
    platform::Services m_services;
    ITrackPlayerWindow& m_window;
    bool m_beyondLimits = false;
    std::shared_ptr<platform::IApplication> m_application;
    std::shared_ptr<platform::IMxDocument> m_document;
};

}  // namespace wxl::movement
