#pragma once
// Controls of a form as plain values. Handlers change them; whoever draws the form shows them.

#include <cstdint>
#include <string>
#include <vector>

namespace wxl::platform {

/// The two background colours of text and list controls.
enum class BackColor { kWindow, kButtonFace };

struct TextBox {
    std::string Text;
    bool Enabled = true;
    BackColor Back = BackColor::kWindow;
    std::string Hint = {};  ///< shown in grey while the box is empty
};

struct Label {
    std::string Caption;
    bool Enabled = true;
};

struct Button {
    std::string Caption;
    bool Enabled = true;
};

struct CheckBox {
    std::string Caption;
    int Value = 0;  ///< 0 or 1
    bool Enabled = true;
};

struct OptionButton {
    std::string Caption;
    bool Value = false;
    bool Enabled = true;
};

struct ComboBox {
    std::vector<std::string> Items;
    int ListIndex = -1;  ///< -1: no item chosen
    bool Enabled = true;
    BackColor Back = BackColor::kWindow;
    std::string Hint = {};  ///< shown in grey while no item is chosen

    /// The chosen item, or "".
    std::string Text() const {
        return ListIndex >= 0 && ListIndex < static_cast<int>(Items.size()) ? Items[static_cast<std::size_t>(ListIndex)]
                                                                            : std::string();
    }

    /// Chooses the first item equal to `text`; false and no change when there is none.
    bool Select(const std::string& text) {
        for (std::size_t i = 0; i < Items.size(); ++i) {
            if (Items[i] != text) continue;
            ListIndex = static_cast<int>(i);
            return true;
        }
        return false;
    }
};

/// A table of texts.
struct DataGrid {
    std::vector<std::string> Columns;
    std::vector<std::vector<std::string>> Rows;
    bool Visible = true;
    int CurrentRow = -1;  ///< the row chosen by the user; -1: none

    void Clear() {
        Columns.clear();
        Rows.clear();
        CurrentRow = -1;
    }
};

struct ProgressBar {
    double Minimum = 0.0;
    double Maximum = 100.0;
    double Value = 0.0;
};

struct Slider {
    std::int32_t Minimum = 0;
    std::int32_t Maximum = 10;
    std::int32_t Value = 0;
    bool Enabled = true;
};

/// Pages of a tabbed dialog.
struct Tab {
    std::vector<std::string> Pages;
    int Current = 0;
};

}  // namespace wxl::platform
