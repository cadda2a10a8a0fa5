#pragma once
#include "movement/FrmPW.h"
#include "platform/commands.h"
#include "platform/services.h"

#include <memory>
#include <string>
#include <utility>

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

    /// Begins anew at each animal: every fix follows on the one before it of the same value in this field, and the
    /// first one of each has no distances or speeds, whatever stood there. Rows without a value get none of the six.
    /// Empty (at first): all rows are one track.
    void SetAnimalField(std::string name) { m_animalField = std::move(name); }

    /// Makes sure, before anything is written, that columns which stand already hold every value: else a box
    /// names the first that does not fit, and nothing changes. Off at first: values become what the column makes of
    /// them.
    void SetChecksValuesFirst(bool value) { m_checksValuesFirst = value; }

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

    class ResultFields;
    std::string FillRows(platform::IFeatureCursor& cursor, const ResultFields& fields);
    std::string FillTrack(platform::IFeatureCursor& cursor, const ResultFields& fields);
    std::string FillTracks(platform::IFeatureCursor& cursor, const ResultFields& fields);
    std::string TryValues();

    platform::Services m_services;
    FrmPW m_pleaseWait;
    bool m_beyondLimits = false;
    bool m_checksValuesFirst = false;
    std::string m_animalField;
    std::shared_ptr<platform::IApplication> m_application;
    std::shared_ptr<platform::IMxDocument> m_document;
};

}  // namespace wxl::movement
