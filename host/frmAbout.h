#pragma once
#include "platform/controls.h"

#include <string>

namespace wxl::host {

/// The About box: version, credits, citation and disclaimer in a text box that cannot be edited.
class frmAbout {
public:
    const std::string Caption = "About WXL Tools ";
    platform::Label lblHeading{"WXL Tools"};
    platform::TextBox txtAbout;  ///< read-only
    platform::Button btnExit{"Exit"};
    bool Visible = true;  ///< false after btnExit

    /// Fills the text box. Lines end in a line feed.
    void Form_Load();
    void btnExit_Click() { Visible = false; }
};

}  // namespace wxl::host
