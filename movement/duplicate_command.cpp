#include "movement/duplicate_command.h"

#include "movement/duplicate_pass.h"
#include "movement/selected_layer.h"
#include "platform/guarded.h"

namespace wxl::movement {

using namespace wxl::platform;

DuplicateCommand::DuplicateCommand(const Services& services, IPleaseWaitWindow& window, const DuplicateRules& rules)
    : m_rules(rules), m_services(services), m_pleaseWait(*services.Host, window) {}

void DuplicateCommand::OnCreate(const std::shared_ptr<IApplication>& hook) {
    m_application = hook;
    m_document = hook ? hook->Document() : nullptr;
}

void DuplicateCommand::RemoveDuplicates() {
    Guarded(*m_services.Messages, m_rules.ClickLabel, [&] {
        IMessages& messages = *m_services.Messages;
        if (m_rules.AsksForDocumentAtClick && m_application) m_document = m_application->Document();
        const auto layer = selected_feature_layer(Document());
        if (!layer) {
            messages.Show({.Text = m_rules.NoLayer, .Kind = platform::BoxKind::kRefusal});
            return;
        }
        if (!Suits(*feature_class_of(*layer))) {
            messages.Show({.Text = m_rules.WrongLayer, .Kind = platform::BoxKind::kRefusal});
            return;
        }
        if (const std::string reason = layer->WhyReadOnly(); !reason.empty()) {
            messages.Show({.Text = reason, .Kind = platform::BoxKind::kRefusal});
            return;
        }
        const auto selection = GetSelectionFromActiveLayer();
        if (!selection) Raise(error_number::kObjectNotSet);
        auto cursor = selection->Find({.Where = std::nullopt, .WithShape = m_rules.LooksAtShapes});
        m_pleaseWait.SetRange(static_cast<double>(selection->Count()) + 1.0);
        CalcFeatures(std::move(cursor), selection);
    });
}

void DuplicateCommand::CalcFeatures(std::unique_ptr<IFeatureCursor> cursor,
                                    const std::shared_ptr<ISelectionSet>& selection) {
    Guarded(*m_services.Messages, m_rules.CalcFeaturesLabel, [&] {
        const auto layer = selected_feature_layer(Document());
        if (!cursor || !selection || !layer) Raise(error_number::kObjectNotSet);
        const auto index = IndexOf(*feature_class_of(*layer));
        const DuplicatePass pass{*m_services.Messages, Document(), m_pleaseWait, CountLimit(m_beyondLimits)};
        remove_duplicates(pass, std::move(cursor), *selection, *index, m_rules.LooksAtShapes);
    });
}

std::unique_ptr<IDuplicateIndex> DuplicateCommand::IndexOf(IFeatureClass& features) const {
    if (m_animalField.empty()) return MakeIndex(features);
    const int field = features.Table().FindField(m_animalField);
    if (field < 0) Raise(error_number::kSubscript, "There is no field \"" + m_animalField + "\".");
    return std::make_unique<AnimalIndex>(field, [this, &features] { return MakeIndex(features); });
}

std::shared_ptr<ISelectionSet> DuplicateCommand::GetSelectionFromActiveLayer() {
    return Guarded(*m_services.Messages, m_rules.SelectionOfSelectedLayerLabel,
                   [&] { return selection_of_selected_layer(Document()); });
}

std::shared_ptr<ISelectionSet> DuplicateCommand::GetSelectionFrom2Layer(const std::string& name) {
    return Guarded(*m_services.Messages, m_rules.SelectionOfLayerLabel,
                   [&] { return selection_of_layer_named(Document(), name); });
}

IMxDocument& DuplicateCommand::Document() const {
    if (!m_document) Raise(error_number::kObjectNotSet);
    return *m_document;
}

}  // namespace wxl::movement
