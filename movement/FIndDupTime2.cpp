#include "movement/FIndDupTime2.h"

#include "movement/duplicate_pass.h"
#include "movement/error_labels.h"
#include "movement/selected_layer.h"
#include "movement/time2.h"
#include "platform/guarded.h"

namespace wxl::movement {

using namespace wxl::platform;
namespace labels = error_labels::time2_duplicates;

FIndDupTime2::FIndDupTime2(const Services& services, IPleaseWaitWindow& window)
    : m_services(services), m_pleaseWait(*services.Host, window) {}

CommandProperties FIndDupTime2::Properties() const {
    return {.Name = "RemoveDupsByTime2",
            .Caption = "Remove Time2 Field Duplicates",
            .Tooltip = "Finds and Removes Duplicate points using the time2 field.",
            .Message = "Finds and Removes Duplicate points using the time2 field."};
}

void FIndDupTime2::OnCreate(const std::shared_ptr<IApplication>& hook) {
    m_application = hook;
    m_document = hook ? hook->Document() : nullptr;
}

void FIndDupTime2::FindandRemoveDupsByTime2() {
    Guarded(*m_services.Messages, labels::kClick, [&] {
        IMessages& messages = *m_services.Messages;
        const auto layer = selected_feature_layer(Document());
        if (!layer) {
            messages.Show({.Text = "Please select points layer"});
            return;
        }
        const auto features = feature_class_of(*layer);
        if (features->Table().FindField(kTime2Field) < 0 || features->Shape() != ShapeType::kPoint) {
            messages.Show({.Text = "You must select points layer with a Time2 field"});
            return;
        }
        if (const std::string reason = layer->WhyReadOnly(); !reason.empty()) {
            messages.Show({.Text = reason});
            return;
        }
        const auto selection = GetSelectionFromActiveLayer();
        if (!selection) Raise(error_number::kObjectNotSet);
        auto cursor = selection->Find({.Where = std::nullopt, .WithShape = false});
        m_pleaseWait.SetRange(static_cast<double>(selection->Count()) + 1.0);
        CalcFeatures(std::move(cursor), selection);
    });
}

void FIndDupTime2::CalcFeatures(std::unique_ptr<IFeatureCursor> cursor,
                                const std::shared_ptr<ISelectionSet>& selection) {
    Guarded(*m_services.Messages, labels::kCalcFeatures, [&] {
        const auto layer = selected_feature_layer(Document());
        if (!cursor || !selection || !layer) Raise(error_number::kObjectNotSet);
        Time2Index index(feature_class_of(*layer)->Table().FindField(kTime2Field));
        const DuplicatePass pass{*m_services.Messages, Document(), m_pleaseWait, CountLimit(m_beyondLimits)};
        remove_duplicates(pass, std::move(cursor), *selection, index, false);
    });
}

std::shared_ptr<ISelectionSet> FIndDupTime2::GetSelectionFromActiveLayer() {
    return Guarded(*m_services.Messages, labels::kGetSelectionFromActiveLayer,
                   [&] { return selection_of_selected_layer(Document()); });
}

std::shared_ptr<ISelectionSet> FIndDupTime2::GetSelectionFrom2Layer(const std::string& name) {
    return Guarded(*m_services.Messages, labels::kGetSelectionFrom2Layer,
                   [&] { return selection_of_layer_named(Document(), name); });
}

IMxDocument& FIndDupTime2::Document() const {
    if (!m_document) Raise(error_number::kObjectNotSet);
    return *m_document;
}

}  // namespace wxl::movement
