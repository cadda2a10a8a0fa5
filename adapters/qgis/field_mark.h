#pragma once
#include <algorithm>
#include <QColor>
#include <QComboBox>
#include <QLabel>

namespace wxl::qgis {

/// Text in lines, never cut: layouts give a wrapped label less height than it needs where room is short.
class WrappedLabel : public QLabel {
public:
    WrappedLabel() { setWordWrap(true); }
    void NeedHeight() { setMinimumHeight(std::max(0, heightForWidth(width()))); }

protected:
    void resizeEvent(QResizeEvent* event) override {
        QLabel::resizeEvent(event);
        NeedHeight();
    }
};

/// Shows its placeholder text in grey while nothing is chosen, which the toolkit's own box does not in every version.
class HintedComboBox final : public QComboBox {
protected:
    void paintEvent(QPaintEvent* event) override;
};

/// A sentence below a field that says what is wrong with it, and a red edge around the field meanwhile. Not there while
/// all is well.
class FieldMark final : public WrappedLabel {
public:
    /// The field outlives the mark's use of it. The label belongs into a layout, right below the field.
    explicit FieldMark(QWidget& field);

    /// "" takes the mark away.
    void Show(const QString& problem);

private:
    QWidget& m_field;
    QWidget* m_edge;
    QColor m_ground;  ///< for which the colour was chosen
};

}  // namespace wxl::qgis
