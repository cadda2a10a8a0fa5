#pragma once
#include "movement/FrmPW.h"
#include "platform/commands.h"
#include "platform/services.h"

#include <memory>
#include <string>

namespace wxl::movement {

/// The command "Remove Time2 Field Duplicates": of the selected fixes with equal "Time2" (whole seconds, fractions
/// rounded half to even) only the one with the lowest object ID stays; the others are deleted from the table.
///
/// A selected fix whose Time2 is missing, no number or outside 32 bits ends the pass with the report of an error (13 or
/// 6). Faults are reported in a box and never thrown; deletions made before one stay.
class FIndDupTime2 final : public platform::ICommand {
public:
    /// Services used: messages, host. They and the window must outlive the command.
    FIndDupTime2(const platform::Services& services, IPleaseWaitWindow& window);

    platform::CommandProperties Properties() const override;
    void OnCreate(const std::shared_ptr<platform::IApplication>& hook) override;
    void OnClick() override { FindandRemoveDupsByTime2(); }

    /// Lifts the limit of object IDs to 32767. Off at first.
    void SetBeyondLimits(bool value) { m_beyondLimits = value; }

    /// Checks the selected layer and removes the duplicates among its selected fixes.
    void FindandRemoveDupsByTime2();

    /// Deletes the duplicates: for each fix of `cursor`, in its order, every fix of the selection with a higher object
    /// ID and the same Time2. Then redraws the map and tells how many were deleted.
    void CalcFeatures(std::unique_ptr<platform::IFeatureCursor> cursor,
                      const std::shared_ptr<platform::ISelectionSet>& selection);

    /// The selection of the selected layer, or of the first layer of that name; null when there is none.
    std::shared_ptr<platform::ISelectionSet> GetSelectionFromActiveLayer();
    std::shared_ptr<platform::ISelectionSet> GetSelectionFrom2Layer(const std::string& name);

private:
    platform::IMxDocument& Document() const;

    platform::Services m_services;
    FrmPW m_pleaseWait;
    bool m_beyondLimits = false;
    std::shared_ptr<platform::IApplication> m_application;
    std::shared_ptr<platform::IMxDocument> m_document;
};

}  // namespace wxl::movement
