#include "adapters/qgis/field_mark.h"

#include "adapters/qgis/curve_plot.h"

#include <QEvent>
#include <QPainter>
#include <QStylePainter>

namespace wxl::qgis {
namespace {

QColor red_on(const QColor& ground) {
    return ReadableOn(ground, QColor(0xc6, 0x28, 0x28));
}

/// Lies over a field, whatever its style draws, and lets the mouse through.
class RedEdge final : public QWidget {
public:
    explicit RedEdge(QWidget& field) : QWidget(&field) {
        setAttribute(Qt::WA_TransparentForMouseEvents);
        setVisible(false);
        field.installEventFilter(this);
    }

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Resize) setGeometry(parentWidget()->rect());
        return QWidget::eventFilter(watched, event);
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setPen(QPen(red_on(parentWidget()->palette().color(QPalette::Base)), 2));
        painter.drawRect(QRectF(rect()).adjusted(1, 1, -1, -1));
    }
};

}  // namespace

void HintedComboBox::paintEvent(QPaintEvent* event) {
    if (currentIndex() >= 0 || placeholderText().isEmpty()) return QComboBox::paintEvent(event);
    QStylePainter painter(this);
    QStyleOptionComboBox option;
    initStyleOption(&option);
    option.currentText = placeholderText();
    const QColor grey = option.palette.color(QPalette::PlaceholderText);
    for (const auto role : {QPalette::ButtonText, QPalette::Text}) option.palette.setColor(role, grey);
    painter.drawComplexControl(QStyle::CC_ComboBox, option);
    painter.drawControl(QStyle::CE_ComboBoxLabel, option);
}

FieldMark::FieldMark(QWidget& field) : m_field(field), m_edge(new RedEdge(field)) {
    setObjectName(QStringLiteral("problem_") + field.objectName());
    setTextFormat(Qt::PlainText);
    setVisible(false);
}

void FieldMark::Show(const QString& problem) {
    QPalette shown = m_field.window()->palette();
    const QColor ground = shown.color(QPalette::Window);
    if (problem == text() && isHidden() == problem.isEmpty() && ground == m_ground) return;
    m_ground = ground;
    setText(problem);
    m_field.setAccessibleDescription(problem);
    shown.setColor(QPalette::WindowText, red_on(ground));
    setPalette(shown);
    setVisible(!problem.isEmpty());
    m_edge->setGeometry(m_field.rect());
    m_edge->setVisible(!problem.isEmpty());
    m_edge->raise();
    NeedHeight();
}

}  // namespace wxl::qgis
