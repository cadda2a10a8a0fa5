#pragma once
#include <qgsapplication.h>
#include <QString>
#include <QWidget>

namespace wxl::tests {

/// Saves what the widget looks like as artefacts/screenshots/NAME.png under the build folder.
void SaveScreenshot(QWidget& widget, const QString& name);

/// Lets windows lay out and paint what was asked for so far, without waiting for a time.
void SettleWindows();

}  // namespace wxl::tests
