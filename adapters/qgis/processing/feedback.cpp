#include "adapters/qgis/processing/feedback.h"

#include "adapters/qgis/qgis_values.h"
#include "platform/message_text.h"

#include <QCoreApplication>

namespace wxl::qgis {
namespace {

const char* name_of(platform::Answer answer) {
    switch (answer) {
        case platform::Answer::kYes:
            return "yes";
        case platform::Answer::kNo:
            return "no";
        case platform::Answer::kCancel:
            return "cancel";
        case platform::Answer::kOk:
            break;
    }
    return "OK";
}

}  // namespace

platform::Answer FeedbackMessages::Show(const platform::MessageBox& box) {
    const QString text = ToQString(platform::PlainText(box));
    if (box.Choice != platform::Buttons::kOk) {
        const auto given = m_answers.find(box.About);
        const platform::Answer answer = given == m_answers.end() ? platform::Answer::kNo : given->second;
        m_feedback.pushInfo(text + QStringLiteral("\nAnswer: ") + QLatin1String(name_of(answer)));
        return answer;
    }
    if (platform::is_failure(box)) {
        ++m_faults;
        m_lastFault = text;
        m_feedback.reportError(text);
        return platform::Answer::kOk;
    }
    ++m_notices;
    m_lastNotice = text;
    if (box.Sign == platform::Icon::kExclamation)
        m_feedback.pushWarning(text);
    else
        m_feedback.pushInfo(text);
    return platform::Answer::kOk;
}

void FeedbackHost::Watch(const platform::ProgressBar* bar, const platform::TextBox* status) {
    m_bar = bar;
    m_status = status;
}

void FeedbackHost::Yield() {
    if (m_status && m_status->Text != m_shownStatus) {
        m_shownStatus = m_status->Text;
        m_feedback.setProgressText(ToQString(m_shownStatus));
    }
    if (m_bar && m_bar->Maximum > m_bar->Minimum)
        m_feedback.setProgress(100.0 * (m_bar->Value - m_bar->Minimum) / (m_bar->Maximum - m_bar->Minimum));
    QCoreApplication::processEvents();
    if (m_feedback.isCanceled() && m_onCancel) m_onCancel();
}

void FeedbackHost::SetStatus(std::string_view text) {
    if (!text.empty()) m_feedback.setProgressText(ToQString(text));
}

void FeedbackWaitWindow::ShowPleaseWait(movement::FrmPW& form) {
    m_wasShown = true;
    m_host.Watch(&form.PBar, nullptr);
}

void FeedbackWaitWindow::HidePleaseWait(movement::FrmPW&) {
    m_host.Watch(nullptr, nullptr);
}

}  // namespace wxl::qgis
