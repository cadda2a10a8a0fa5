#pragma once
#include "movement/duplicate_index.h"
#include "movement/FrmPW.h"
#include "platform/commands.h"
#include "platform/services.h"

#include <memory>
#include <string>
#include <utility>

namespace wxl::movement {

/// In what the commands that remove duplicates differ, beside what counts as a duplicate.
struct DuplicateRules {
    const char* ClickLabel;  ///< labels of error reports
    const char* CalcFeaturesLabel;
    const char* SelectionOfLayerLabel;
    const char* SelectionOfSelectedLayerLabel;
    const char* NoLayer;     ///< text of the box when no layer is selected
    const char* WrongLayer;  ///< text of the box when the layer does not suit
    bool LooksAtShapes;
    bool AsksForDocumentAtClick;  ///< not only when it is created
};

/// The steps of a command that removes duplicates among the selected fixes of the selected layer.
class DuplicateCommand : public platform::ICommand {
public:
    void OnCreate(const std::shared_ptr<platform::IApplication>& hook) override;
    void OnClick() override { RemoveDuplicates(); }

    /// Lifts the limit of object IDs to 32767. Off at first.
    void SetBeyondLimits(bool value) { m_beyondLimits = value; }

    /// Compares the fixes of each animal with each other only: those with one value in this field. A fix without a
    /// value is of no animal, and stays. Empty (at first): all are compared.
    void SetAnimalField(std::string name) { m_animalField = std::move(name); }

    /// Deletes the duplicates of each fix of `cursor`, in its order, among those of the selection; fixes deleted
    /// already are passed over. Then redraws the map and tells how many were deleted.
    void CalcFeatures(std::unique_ptr<platform::IFeatureCursor> cursor,
                      const std::shared_ptr<platform::ISelectionSet>& selection);

    /// The selection of the selected layer, or of the first layer of that name; null when there is none.
    std::shared_ptr<platform::ISelectionSet> GetSelectionFromActiveLayer();
    std::shared_ptr<platform::ISelectionSet> GetSelectionFrom2Layer(const std::string& name);

protected:
    /// Services used: messages, host. They and the window must outlive the command.
    DuplicateCommand(const platform::Services& services, IPleaseWaitWindow& window, const DuplicateRules& rules);

    /// Checks the selected layer and removes the duplicates among its selected fixes.
    void RemoveDuplicates();

private:
    virtual bool Suits(platform::IFeatureClass& features) const = 0;
    virtual std::unique_ptr<IDuplicateIndex> MakeIndex(platform::IFeatureClass& features) const = 0;
    std::unique_ptr<IDuplicateIndex> IndexOf(platform::IFeatureClass& features) const;
    platform::IMxDocument& Document() const;

    DuplicateRules m_rules;
    platform::Services m_services;
    FrmPW m_pleaseWait;
    bool m_beyondLimits = false;
    std::string m_animalField;
    std::shared_ptr<platform::IApplication> m_application;
    std::shared_ptr<platform::IMxDocument> m_document;
};

}  // namespace wxl::movement
