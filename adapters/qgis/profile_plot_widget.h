#pragma once
#include "kde_tool/profile_plot.h"

#include <QStackedWidget>

class QLabel;

namespace wxl::qgis {

/// Draws the form's plot of a bandwidth search: the scores, the minimum, HREF and the bandwidth in use; or the hint.
class ProfilePlotWidget final : public QStackedWidget {
public:
    explicit ProfilePlotWidget(QWidget* parent = nullptr);

    /// Shows the control's present value; does nothing while it is what is shown already.
    void Show(const kde_tool::ProfilePlot& plot);

    QSize sizeHint() const override { return {480, 240}; }

    /// Draws the plot anew in another palette.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void Draw(const pictures::ProfilePicture& picture);

    QLabel* m_hint;
    QWidget* m_plot;
    kde_tool::ProfilePlot m_shown;
};

}  // namespace wxl::qgis
