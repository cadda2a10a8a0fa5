#pragma once
#include "movement/FrmPW.h"
#include "platform/commands.h"
#include "platform/services.h"

#include <memory>
#include <string>

namespace wxl::movement {

/// The command "Calculate Travel Times and Distances": adds six fields to a point layer and fills them with the time,
/// distance and speed between each observation and the one before it, in the order of the table.
///
/// The layer needs a field "Time2" (whole seconds on any continuous scale) and coordinates in a UTM projection. Rows
/// must stand in time order. Faults are reported in a box and never thrown; nothing is rolled back.
class OVIOBS final : public platform::ICommand {
public:
    /// Services used: messages, host, geometry. They and the window must outlive the command.
    OVIOBS(const platform::Services& services, IPleaseWaitWindow& window);

    platform::CommandProperties Properties() const override;
    void OnCreate(const std::shared_ptr<platform::IApplication>& hook) override;
    void OnClick() override { CalcObsFields(); }

    /// Lifts the limit of 32767 rows. Off at first.
    void SetBeyondLimits(bool value) { m_beyondLimits = value; }

    /// Checks the selected layer, asks, then adds the missing fields and fills all six.
    void CalcObsFields();

    /// Adds whichever of the six fields the selected layer lacks. Existing ones stay, whatever their type.
    void Addfields();

    /// A cursor over all rows of the selected layer, in the order of the table; null after a reported fault.
    std::unique_ptr<platform::IFeatureCursor> getAndSelectAllFromActiveLayer();

    /// Fills the six fields of the rows that `cursor`, one over the selected layer, returns. A row with the time of the
    /// row before it, or a layer that is not in UTM, ends the pass with a message; rows before that stay filled.
    void CalcFeatures(std::unique_ptr<platform::IFeatureCursor> cursor);

    /// Deletes the six fields from the selected layer. No command calls it.
    void DeleteFields();

    /// The selection of the first layer of that name, or of the selected layer; null when there is none.
    std::shared_ptr<platform::ISelectionSet> GetSelectionFrom2Layer(const std::string& name);
    std::shared_ptr<platform::ISelectionSet> GetSelectionFromActiveLayer();

private:
    platform::IMxDocument& Document() const;
    std::shared_ptr<platform::IFeatureClass> SelectedClass() const;
    std::string FillRows(platform::IFeatureCursor& cursor);

    platform::Services m_services;
    FrmPW m_pleaseWait;
    bool m_beyondLimits = false;
    std::shared_ptr<platform::IApplication> m_application;
    std::shared_ptr<platform::IMxDocument> m_document;
};

}  // namespace wxl::movement
