#pragma once
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace wxl::platform {

enum class Icon { kNone, kCritical, kExclamation, kQuestion, kInformation };
enum class Buttons { kOk, kYesNo, kYesNoCancel };
enum class Answer { kOk, kYes, kNo, kCancel };

/// What a message box is about; lets a caller without a screen (command line, batch) answer a question by name.
enum class Topic { kNotice, kBuffer, kOverlap, kAddFields, kOutOfSequence, kAnimals, kStop };

/// What a message box is to whoever shows it; set where the box arises, so that nobody reads it out of a text.
enum class BoxKind {
    kNote,      ///< tells something, a warning among it
    kRefusal,   ///< the user's choice cannot be worked with; nothing was done
    kFault,     ///< a step failed
    kQuestion,  ///< waits for an answer
};

/// One message box. An empty title means the application's own.
struct MessageBox {
    std::string Text = {};
    std::string Title = {};
    Icon Sign = Icon::kNone;
    Buttons Choice = Buttons::kOk;
    Topic About = Topic::kNotice;
    BoxKind Kind = BoxKind::kNote;
    std::optional<Answer> Advised = {};  ///< to a question: what most would answer here
};

/// Message boxes of the host.
class IMessages {
public:
    virtual ~IMessages() = default;

    /// Shows the box and waits for the answer; kOk for a box with OK only.
    virtual Answer Show(const MessageBox& box) = 0;
};

/// A common file dialog: filter in the form "Text files (*.txt)|*.txt".
struct FileDialog {
    std::string Title = {};
    std::string Filter = {};
    bool AskBeforeOverwriting = false;  ///< save dialogs only
};

/// File and folder dialogs of the host; nothing is returned when the user cancels.
class IFileDialogs {
public:
    virtual ~IFileDialogs() = default;
    virtual std::optional<std::filesystem::path> OpenFile(const FileDialog& dialog) = 0;
    virtual std::optional<std::filesystem::path> SaveFile(const FileDialog& dialog) = 0;
    virtual std::optional<std::filesystem::path> ChooseFolder(const std::string& title) = 0;
};

/// Gives the host's message loop a turn, so that windows repaint and Stop buttons answer during long work.
class IHost {
public:
    virtual ~IHost() = default;
    virtual void Yield() = 0;

    /// As Yield, but sleeps while nothing happens, for `seconds` at most; may return earlier. Without a message loop to
    /// wake it, one turn.
    virtual void WaitForEvents(double seconds) {
        (void)seconds;
        Yield();
    }

    /// Puts a line into the host's status bar.
    virtual void SetStatus(std::string_view text) = 0;
};

}  // namespace wxl::platform
