#include "adapters/qgis/keyboard.h"

#include <QAbstractButton>
#include <QGroupBox>
#include <QLabel>
#include <QLayout>
#include <QScrollArea>
#include <QSet>
#include <QTabBar>
#include <QTabWidget>
#include <QToolButton>
#include <vector>

namespace wxl::qgis {
namespace {

/// The letter after "&", lower case; null where there is none.
QChar letter_of(const QString& text) {
    const auto mark = text.indexOf(QLatin1Char('&'));
    return mark < 0 || mark + 1 >= text.size() ? QChar() : text.at(mark + 1).toLower();
}

/// The text with "&" before a letter that is not taken: a word's first one if possible. Unchanged when all are taken.
QString marked(const QString& text, QSet<QChar>& taken) {
    if (!letter_of(text).isNull()) {
        taken.insert(letter_of(text));
        return text;
    }
    const auto try_places = [&](bool wordsOnly) {
        for (int i = 0; i < text.size(); ++i) {
            const bool starts = i == 0 || text.at(i - 1).isSpace() || text.at(i - 1) == QLatin1Char('(');
            if ((wordsOnly && !starts) || !text.at(i).isLetter() || taken.contains(text.at(i).toLower())) continue;
            taken.insert(text.at(i).toLower());
            return i;
        }
        return -1;
    };
    int place = try_places(true);
    if (place < 0) place = try_places(false);
    return place < 0 ? text : QString(text).insert(place, QLatin1Char('&'));
}

/// The page of a tab widget that holds the widget, or null.
QWidget* page_of(const QTabWidget* tabs, QWidget* widget) {
    for (int i = 0; tabs && i < tabs->count(); ++i)
        if (tabs->widget(i)->isAncestorOf(widget)) return tabs->widget(i);
    return nullptr;
}

void mark_widget(QWidget* widget, QSet<QChar>& taken) {
    if (auto* button = qobject_cast<QAbstractButton*>(widget); button && !qobject_cast<QToolButton*>(widget))
        button->setText(marked(button->text(), taken));
    else if (auto* label = qobject_cast<QLabel*>(widget); label && label->buddy())
        label->setText(marked(label->text(), taken));
}

void collect(QWidget& widget, std::vector<QWidget*>& found);

void collect(const QLayout& layout, std::vector<QWidget*>& found) {
    for (int i = 0; i < layout.count(); ++i) {
        if (const QLayout* inner = layout.itemAt(i)->layout()) collect(*inner, found);
        if (QWidget* widget = layout.itemAt(i)->widget()) collect(*widget, found);
    }
}

/// The widgets that the Tab key reaches, in the order of the layouts.
void collect(QWidget& widget, std::vector<QWidget*>& found) {
    if (const auto* tabs = qobject_cast<QTabWidget*>(&widget)) {
        found.push_back(tabs->tabBar());
        for (int i = 0; i < tabs->count(); ++i) collect(*tabs->widget(i), found);
        return;
    }
    if (const auto* area = qobject_cast<QScrollArea*>(&widget); area && area->widget())
        return collect(*area->widget(), found);
    if ((widget.focusPolicy() & Qt::TabFocus) != 0) found.push_back(&widget);
    if (widget.layout()) collect(*widget.layout(), found);
}

}  // namespace

void AssignMnemonics(QWidget& window) {
    const auto* tabs = window.findChild<QTabWidget*>();
    const QList<QWidget*> widgets = window.findChildren<QWidget*>();
    // What is always on screen first: its letters are taken on every page.
    QSet<QChar> always;
    for (QWidget* widget : widgets)
        if (!page_of(tabs, widget)) mark_widget(widget, always);
    for (int i = 0; tabs && i < tabs->count(); ++i)
        const_cast<QTabWidget*>(tabs)->setTabText(i, marked(tabs->tabText(i), always));
    for (int i = 0; tabs && i < tabs->count(); ++i) {
        QSet<QChar> taken = always;
        for (QWidget* widget : widgets)
            if (tabs->widget(i)->isAncestorOf(widget)) mark_widget(widget, taken);
    }
}

void OrderTabKey(QWidget& window) {
    std::vector<QWidget*> widgets;
    collect(window, widgets);
    for (std::size_t i = 1; i < widgets.size(); ++i) QWidget::setTabOrder(widgets[i - 1], widgets[i]);
}

void NameForScreenReaders(QWidget& window) {
    for (const QLabel* label : window.findChildren<QLabel*>())
        if (label->buddy() != nullptr && label->buddy()->accessibleName().isEmpty())
            label->buddy()->setAccessibleName(QString(label->text()).remove(QLatin1Char('&')));
    for (QWidget* widget : window.findChildren<QWidget*>()) {
        if ((widget->focusPolicy() & Qt::TabFocus) == 0 || !widget->accessibleName().isEmpty()) continue;
        if (const auto* button = qobject_cast<QAbstractButton*>(widget); button != nullptr && !button->text().isEmpty())
            continue;
        if (!widget->toolTip().isEmpty()) widget->setAccessibleName(widget->toolTip());
    }
}

}  // namespace wxl::qgis
