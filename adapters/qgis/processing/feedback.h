#pragma once
#include "movement/FrmPW.h"
#include "platform/controls.h"
#include "platform/messages.h"

#include <functional>
#include <map>
#include <qgsprocessingfeedback.h>
#include <QString>
#include <string>

namespace wxl::qgis {

/// Message boxes of an algorithm: notices go to its log, questions are answered by its parameters.
class FeedbackMessages final : public platform::IMessages {
public:
    /// The feedback must outlive the object.
    explicit FeedbackMessages(QgsProcessingFeedback& feedback) : m_feedback(feedback) {}

    void WillAnswer(platform::Topic topic, platform::Answer answer) { m_answers[topic] = answer; }

    /// A question that no parameter answers is answered by No.
    platform::Answer Show(const platform::MessageBox& box) override;

    int Faults() const { return m_faults; }
    int Notices() const { return m_notices; }

    /// The text of the last fault, else of the last notice; "" without one.
    QString LastText() const { return m_lastFault.isEmpty() ? m_lastNotice : m_lastFault; }

private:
    QgsProcessingFeedback& m_feedback;
    std::map<platform::Topic, platform::Answer> m_answers;
    int m_faults = 0;
    int m_notices = 0;
    QString m_lastFault;
    QString m_lastNotice;
};

/// The host of an algorithm: every turn shows progress, lets the desktop repaint, and hears of a wish to cancel.
class FeedbackHost final : public platform::IHost {
public:
    /// The feedback must outlive the object.
    explicit FeedbackHost(QgsProcessingFeedback& feedback) : m_feedback(feedback) {}

    /// Shows this bar, and the status text where there is one, until it is set to null.
    void Watch(const platform::ProgressBar* bar, const platform::TextBox* status);

    /// Called at every turn after the user cancelled.
    void SetOnCancel(std::function<void()> action) { m_onCancel = std::move(action); }

    void Yield() override;
    void SetStatus(std::string_view text) override;

private:
    QgsProcessingFeedback& m_feedback;
    const platform::ProgressBar* m_bar = nullptr;
    const platform::TextBox* m_status = nullptr;
    std::string m_shownStatus;
    std::function<void()> m_onCancel;
};

/// The "Please Wait" window of an algorithm is its progress bar.
class FeedbackWaitWindow final : public movement::IPleaseWaitWindow {
public:
    explicit FeedbackWaitWindow(FeedbackHost& host) : m_host(host) {}
    void ShowPleaseWait(movement::FrmPW& form) override;
    void HidePleaseWait(movement::FrmPW& form) override;

    /// Whether it was ever shown, which a tool does when all was checked and its pass over the table begins.
    bool WasShown() const { return m_wasShown; }

private:
    FeedbackHost& m_host;
    bool m_wasShown = false;
};

}  // namespace wxl::qgis
