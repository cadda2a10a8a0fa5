#pragma once
#include <QWidget>

namespace wxl::qgis {

/// Gives every button, check box, option button, list caption and tab under `window` an underlined letter that is
/// pressed with Alt. Letters are unique among what is on screen together: what stands on a page shares its letters with
/// the other pages, but with nothing outside of them.
void AssignMnemonics(QWidget& window);

/// Makes the Tab key go through the window in the order of its layouts, which is that of reading: page after page, and
/// what stands below the pages last.
void OrderTabKey(QWidget& window);

/// Gives everything that takes the keyboard a name for those who do not see it: the caption that stands before it, or
/// what its tooltip says. Buttons are named by their texts.
void NameForScreenReaders(QWidget& window);

}  // namespace wxl::qgis
