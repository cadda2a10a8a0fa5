#include "movement/FindDupxy.h"

#include "movement/duplicate_pass.h"
#include "movement/error_labels.h"
#include "movement/selected_layer.h"
#include "platform/guarded.h"

namespace wxl::movement {

using namespace wxl::platform;
namespace labels = error_labels::xy_duplicates;

FindDupxy::FindDupxy(const Services& services, IPleaseWaitWindow& window)
    : m_services(services), m_pleaseWait(*services.Host, window) {}

CommandProperties FindDupxy::Properties() const {
    return {.Name = "RemoveDupsByxy",
            .Caption = "Remove X/Y Duplicates",
            .Tooltip = "Finds and Removes Duplicate points.",
            .Message = "Finds and Removes Duplicate points using the xy field."};
}

void FindDupxy::OnCreate(const std::shared_ptr<IApplication>& hook) {
    m_application = hook;
    m_document = hook ? hook->Document() : nullptr;
}

void FindDupxy::FindandRemoveDupsByxy() {
    Guarded(*m_services.Messages, labels::kClick, [&] {
        IMessages& messages = *m_services.Messages;
        if (m_application) m_document = m_application->Document();
        const auto layer = selected_feature_layer(Document());
        if (!layer) {
            messages.Show({.Text = "Please select a points layer with some points selected."});
            return;
        }
        const auto features = feature_class_of(*layer);
        if (features->Shape() != ShapeType::kPoint) {
            messages.Show({.Text = "You must select a points layer"});
            return;
        }
        if (const std::string reason = layer->WhyReadOnly(); !reason.empty()) {
            messages.Show({.Text = reason});
            return;
        }
        const auto selection = GetSelectionFromActiveLayer();
        if (!selection) Raise(error_number::kObjectNotSet);
        auto cursor = selection->Find({});
        m_pleaseWait.SetRange(static_cast<double>(selection->Count()) + 1.0);
        CalcFeatures(std::move(cursor), selection);
    });
}

void FindDupxy::CalcFeatures(std::unique_ptr<IFeatureCursor> cursor, const std::shared_ptr<ISelectionSet>& selection) {
    Guarded(*m_services.Messages, labels::kCalcFeatures, [&] {
        const auto layer = selected_feature_layer(Document());
        if (!cursor || !selection || !layer) Raise(error_number::kObjectNotSet);
        LocationIndex index(xy_tolerance(feature_class_of(*layer)->Reference()));
        const DuplicatePass pass{*m_services.Messages, Document(), m_pleaseWait, CountLimit(m_beyondLimits)};
        remove_duplicates(pass, std::move(cursor), *selection, index, true);
    });
}

std::shared_ptr<ISelectionSet> FindDupxy::GetSelectionFromActiveLayer() {
    return Guarded(*m_services.Messages, labels::kGetSelectionFromActiveLayer,
                   [&] { return selection_of_selected_layer(Document()); });
}

std::shared_ptr<ISelectionSet> FindDupxy::GetSelectionFrom2Layer(const std::string& name) {
    return Guarded(*m_services.Messages, labels::kGetSelectionFrom2Layer,
                   [&] { return selection_of_layer_named(Document(), name); });
}

IMxDocument& FindDupxy::Document() const {
    if (!m_document) Raise(error_number::kObjectNotSet);
    return *m_document;
}

}  // namespace wxl::movement
