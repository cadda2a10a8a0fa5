#include "adapters/qgis/breath.h"

#include <QCoreApplication>
#include <QThread>

namespace wxl::qgis {
namespace {

bool reading = false;

}  // namespace

bool Breath::Reading() {
    return reading;
}

void Breath::TakeNow() {
    const QCoreApplication* application = QCoreApplication::instance();
    if (application && !reading && QThread::currentThread() == application->thread()) {
        reading = true;
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
        reading = false;
    }
    m_since.restart();
}

}  // namespace wxl::qgis
