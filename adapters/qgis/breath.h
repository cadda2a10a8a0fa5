#pragma once
#include <QElapsedTimer>

namespace wxl::qgis {

/// Lets windows be painted and timers run while rows are read: many of them take longer than a window may stand still.
/// What the user types and clicks meanwhile waits until the reading is over, so that nothing begins in its midst.
class Breath {
public:
    Breath() { m_since.start(); }

    /// To be called with every row; does nothing outside of the main thread.
    void Take() {
        if (++m_rows % 64 == 0 && m_since.elapsed() >= kPause) TakeNow();
    }

    /// Whether the event loop has its turn in the midst of a reading: what would change what is read has to wait.
    static bool Reading();

private:
    static constexpr qint64 kPause = 25;  ///< milliseconds

    void TakeNow();

    QElapsedTimer m_since;
    unsigned m_rows = 0;
};

}  // namespace wxl::qgis
