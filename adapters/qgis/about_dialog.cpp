#include "adapters/qgis/about_dialog.h"

#include "adapters/qgis/qt_text.h"

#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace wxl::qgis {

AboutDialog::AboutDialog(host::frmAbout& form, QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmAbout"));
    setWindowTitle(ToQString(form.Caption));
    form.Form_Load();
    auto* heading = new QLabel;
    QFont large = heading->font();
    large.setPointSizeF(large.pointSizeF() * 1.5);
    large.setBold(true);
    heading->setFont(large);
    auto* text = new QPlainTextEdit(ToQString(form.txtAbout.Text));
    text->setObjectName(QStringLiteral("txtAbout"));
    text->setReadOnly(true);
    auto* exit = new QPushButton;
    exit->setDefault(true);
    m_binder.Bind(*heading, form.lblHeading, "lblHeading");
    m_binder.Bind(*exit, form.btnExit, "btnExit", [this, &form] {
        form.btnExit_Click();
        accept();
    });
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(exit);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(heading);
    layout->addWidget(text, 1);
    layout->addLayout(buttons);
    m_binder.Refresh();
    resize(560, 460);
}

}  // namespace wxl::qgis
