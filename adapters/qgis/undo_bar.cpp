#include "adapters/qgis/undo_bar.h"

#include "adapters/qgis/layer_rows.h"
#include "adapters/qgis/layer_undo.h"
#include "adapters/qgis/qgis_layers.h"
#include "adapters/qgis/qgis_versions.h"
#include "adapters/qgis/qt_text.h"
#include "adapters/tracking/column_roles.h"
#include "platform/runtime_error.h"

#include <map>
#include <qgsmessagebar.h>
#include <qgsmessagebaritem.h>
#include <QPushButton>

namespace wxl::qgis {
namespace {

/// What the bar says and keeps of a command, by the command's name.
struct Change {
    const char* Command;
    LayerUndo::Scope Scope;
};

const Change* change_of(const std::string& command) {
    static const LayerUndo::Scope rows{true, {}};
    static const LayerUndo::Scope fields{false,
                                         {"T_Obs_Sec", "T_Cumul", "Dist", "Dist_Cumul", "Me_per_Sec", "Mi_per_hr"}};
    static const Change changes[] = {{"CalcOBS", fields}, {"RemoveDupsByTime2", rows}, {"RemoveDupsByxy", rows}};
    for (const Change& change : changes)
        if (command == change.Command) return &change;
    return nullptr;
}

/// " 4 animals (field animal) taken as one.", or "" where the fixes are of one animal or no two of them share one.
QString mixed_animals(QgsVectorLayer& layer, bool selectedOnly) {
    std::vector<std::string> names;
    for (const QgsField& field : layer.fields()) names.push_back(FromQString(field.name()));
    const auto field = tracking::find_animal_column(names);
    if (!field) return {};
    const int column = static_cast<int>(*field);
    QgsFeatureRequest request;
    request.setFlags(kRequestNoGeometry).setSubsetOfAttributes(QgsAttributeList{column});
    if (selectedOnly) request.setFilterFids(layer.selectedFeatureIds());
    std::map<QString, int> fixes;
    bool areTracks = false;
    LayerRows rows(layer, request);
    QgsFeature row;
    while (rows.Next(row))
        if (!row.attribute(column).isNull()) areTracks = ++fixes[row.attribute(column).toString()] > 1 || areTracks;
    if (fixes.size() < 2 || !areTracks) return {};
    return QObject::tr(" %1 animals (field %2) taken as one.").arg(fixes.size()).arg(layer.fields().at(column).name());
}

QgsVectorLayer* highlighted(const Desktop& desktop) {
    return qobject_cast<QgsVectorLayer*>(HighlightedLayer(desktop));
}

}  // namespace

UndoBar::UndoBar(QgsMessageBar& bar, Desktop desktop) : m_bar(&bar), m_desktop(std::move(desktop)) {}

UndoBar::~UndoBar() = default;

void UndoBar::Run(platform::ICommand& command) {
    const Change* change = change_of(command.Properties().Name);
    const QPointer<QgsVectorLayer> layer = change && m_bar ? highlighted(m_desktop) : nullptr;
    if (!layer || !layer->isValid() || layer->isEditable()) return command.OnClick();
    Withdraw();
    std::shared_ptr<LayerUndo> undo;
    QString mixed;
    try {
        mixed = mixed_animals(*layer, change->Scope.Rows);
        undo = LayerUndo::Of(*layer, change->Scope);
    } catch (const platform::RuntimeError&) {
        // Without room for the earlier rows, and with rows that cannot be read, the command itself speaks.
    }
    const long long before = layer->featureCount();
    command.OnClick();
    if (!layer || !undo || !undo->Finish()) return;
    const QString name = ToQString(LayerNames().NameOf(*layer));
    const long long gone = before - layer->featureCount();
    const QString told = !change->Scope.Rows ? tr("Travel times and distances written into \"%1\".").arg(name)
                         : gone == 1         ? tr("1 duplicate fix removed from \"%1\".").arg(name)
                                             : tr("%1 duplicate fixes removed from \"%2\".").arg(gone).arg(name);
    QString back = change->Scope.Rows ? tr("The removed fixes are back in \"%1\".").arg(name)
                                      : tr("The earlier values are back in \"%1\".").arg(name);
    Offer(*layer, told + mixed, [undo, back = std::move(back)] {
        undo->PutBack();
        return back;
    });
}

void UndoBar::Offer(QgsVectorLayer& layer, const QString& text, std::function<QString()> undo) {
    auto* item = QgsMessageBar::createMessage(QString(), text);
    auto* button = new QPushButton(tr("Undo"), item);
    button->setObjectName(QStringLiteral("wxlUndo"));
    button->setToolTip(tr("Puts the layer back as it was before"));
    item->layout()->addWidget(button);
    connect(button, &QPushButton::clicked, this, [this, undo = std::move(undo)] {
        QString told;
        bool done = true;
        try {
            told = undo();
        } catch (const platform::RuntimeError& error) {
            told = tr("Nothing was put back: ") + ToQString(error.Description);
            done = false;
        }
        Withdraw();
        m_bar->pushMessage(QString(), told, done ? Qgis::MessageLevel::Success : Qgis::MessageLevel::Warning);
    });
    connect(&layer, &QgsMapLayer::willBeDeleted, item, [this] { Withdraw(); });
    m_offer = item;
    m_bar->pushWidget(item, Qgis::MessageLevel::Info);
}

void UndoBar::Withdraw() {
    if (m_offer && m_bar) m_bar->popWidget(m_offer);
    m_offer.clear();
}

}  // namespace wxl::qgis
