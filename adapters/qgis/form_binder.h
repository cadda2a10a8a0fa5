#pragma once
#include "platform/controls.h"

#include <functional>
#include <QObject>
#include <vector>

class QAbstractButton;
class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;
class QRadioButton;
class QSlider;
class QTableWidget;
class QTabWidget;

namespace wxl::qgis {

/// Ties the control values of a form to widgets: what the user does is written into the control and its handler is
/// called, and after every handler all widgets show the controls' new values. One method per kind of control; every
/// widget's objectName becomes the control's name.
class FormBinder final : public QObject {
public:
    using Handler = std::function<void()>;

    void Bind(QLineEdit& widget, platform::TextBox& control, const char* name, Handler changed = {});
    void Bind(QCheckBox& widget, platform::CheckBox& control, const char* name, Handler clicked = {});
    void Bind(QRadioButton& widget, platform::OptionButton& control, const char* name, Handler clicked);
    void Bind(QComboBox& widget, platform::ComboBox& control, const char* name, Handler clicked = {});
    void Bind(QPushButton& widget, platform::Button& control, const char* name, Handler clicked);
    void Bind(QLabel& widget, platform::Label& control, const char* name);

    /// With `chosen`, one row at a time can be chosen.
    void Bind(QTableWidget& widget, platform::DataGrid& control, const char* name, Handler chosen = {});
    void Bind(QProgressBar& widget, platform::ProgressBar& control, const char* name);

    /// `changed` is called with every move by hand.
    void Bind(QSlider& widget, platform::Slider& control, const char* name, Handler changed);

    /// `clicked` gets the index of the page that was shown before.
    void Bind(QTabWidget& widget, platform::Tab& control, const char* name, std::function<void(int)> clicked);

    /// Something else to bring up to date after every handler.
    void AlsoRefresh(Handler refresh) { m_refreshers.push_back(std::move(refresh)); }

    /// Shows the controls' present values in all widgets.
    void Refresh();

private:
    /// Runs a handler and shows what it changed; does nothing while widgets are being brought up to date.
    void Run(const Handler& change, const Handler& handler);

    std::vector<Handler> m_refreshers;
    bool m_refreshing = false;
};

}  // namespace wxl::qgis
