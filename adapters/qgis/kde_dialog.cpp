#include "adapters/qgis/kde_dialog.h"

#include "adapters/qgis/curve_plot.h"
#include "adapters/qgis/field_mark.h"
#include "adapters/qgis/guide_window.h"
#include "adapters/qgis/keyboard.h"
#include "adapters/qgis/profile_plot_widget.h"
#include "adapters/qgis/qt_text.h"
#include "adapters/qgis/result_panel_widget.h"
#include "platform/runtime_error.h"

#include <algorithm>
#include <array>
#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QTableWidget>
#include <QTabWidget>
#include <QVBoxLayout>
#include <utility>

namespace wxl::qgis {
namespace {

template <class Widget>
Widget* with_tip(Widget* widget, const char* tip) {
    widget->setToolTip(QString::fromUtf8(tip));
    return widget;
}

QLineEdit* number_edit(const char* tip) {
    auto* edit = with_tip(new QLineEdit, tip);
    edit->setMinimumWidth(110);
    return edit;
}

QLabel* caption(const platform::Label& label, QWidget* buddy) {
    auto* widget = new QLabel(ToQString(label.Caption));
    widget->setBuddy(buddy);
    return widget;
}

QHBoxLayout* row(std::initializer_list<QWidget*> widgets) {
    auto* layout = new QHBoxLayout;
    for (QWidget* widget : widgets) layout->addWidget(widget);
    return layout;
}

QGroupBox* frame(const char* title, QLayout* layout) {
    auto* box = new QGroupBox(QString::fromUtf8(title));
    box->setLayout(layout);
    return box;
}

/// Scrolls up and down where a screen is low. Wants all the room of what it holds, and takes less.
class ScrollingPage final : public QScrollArea {
public:
    explicit ScrollingPage(QWidget* content) {
        setFrameShape(QFrame::NoFrame);
        setFocusPolicy(Qt::NoFocus);
        setWidgetResizable(true);
        setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        setWidget(content);
        // The page has the ground of its tab, not that of a list.
        viewport()->setAutoFillBackground(false);
        content->setAutoFillBackground(false);
    }

    QSize sizeHint() const override { return widget()->sizeHint() + QSize(BarWidth(), 0); }
    QSize minimumSizeHint() const override { return {widget()->minimumSizeHint().width() + BarWidth(), 120}; }

private:
    int BarWidth() const { return verticalScrollBar()->sizeHint().width(); }
};

QWidget* page_of(std::initializer_list<QWidget*> frames, bool stretchAtEnd) {
    auto* page = new QWidget;
    auto* layout = new QVBoxLayout(page);
    for (QWidget* widget : frames) layout->addWidget(widget);
    if (stretchAtEnd) layout->addStretch();
    return new ScrollingPage(page);
}

}  // namespace

KdeDialog::KdeDialog(kde_tool::frmKDE& form, QgisHost& host, QWidget* parent)
    : QDialog(parent), m_form(form), m_tabs(new QTabWidget) {
    setObjectName(QStringLiteral("frmKDE"));
    setWindowTitle(ToQString(form.Caption));
    form.Form_Load();
    // Marks of the pages show what this finds.
    m_binder.AlsoRefresh([this] { m_form.CheckFields(); });

    const std::vector<QWidget*> pages = {InputPage(), KernelPage(), BandwidthPage(), OutputPage()};
    for (std::size_t i = 0; i < pages.size(); ++i) m_tabs->addTab(pages[i], ToQString(form.SSTab1.Pages[i]));
    m_binder.Bind(*m_tabs, form.SSTab1, "SSTab1", [this](int previous) { m_form.SSTab1_Click(previous); });

    auto* layout = new QVBoxLayout(this);
    m_panel = new ResultPanelWidget;
    layout->addWidget(m_tabs, 1);
    layout->addWidget(m_panel);
    layout->addLayout(Footer());
    AssignMnemonics(*this);
    OrderTabKey(*this);
    NameForScreenReaders(*this);
    m_binder.AlsoRefresh([this] {
        ShowUnits();
        m_panel->Show(m_form.Panel);
        for (int i = 0; i < m_tabs->count(); ++i)
            static_cast<QScrollArea*>(m_tabs->widget(i))->widget()->setEnabled(!Running());
        TakeFocus();
        if (!m_form.Visible && isVisible()) accept();
    });
    m_yieldToken = host.OnYield([this] { m_binder.Refresh(); });
    m_binder.Refresh();
    FitScreen();
}

/// Where the form asks for the keyboard; pages have it after a run only.
void KdeDialog::TakeFocus() {
    if (m_form.FocusOn.empty() || Running()) return;
    auto* field = m_tabs->findChild<QWidget*>(ToQString(std::exchange(m_form.FocusOn, {})));
    if (!field) return;
    field->setFocus(Qt::OtherFocusReason);
    static_cast<QScrollArea*>(m_tabs->currentWidget())->ensureWidgetVisible(field);
}

QWidget* KdeDialog::MarkOf(QWidget& field) {
    auto* mark = new FieldMark(field);
    m_binder.AlsoRefresh(
        [this, mark, control = FromQString(field.objectName())] { mark->Show(ToQString(m_form.ProblemOf(control))); });
    return mark;
}

void KdeDialog::OnZoom(std::function<void(const kde_tool::ResultPanel&)> zoom) {
    m_panel->SetZoom(std::move(zoom));
}

/// As large as the pages want it, where the screen has that much room.
void KdeDialog::FitScreen() {
    const QScreen* screen = parentWidget() ? parentWidget()->screen() : QGuiApplication::primaryScreen();
    const QSize room = screen->availableGeometry().size() - QSize(16, 48);  // the window's frame
    resize(sizeHint().expandedTo({640, 620}).boundedTo(room));
}

/// The page of the guide for the page on screen.
QString KdeDialog::GuidePage() const {
    const std::array<const char*, 4> pages = {"first-analysis-qgis", "settings-and-limits", "choosing-a-bandwidth",
                                              "settings-and-limits"};
    return QLatin1String(pages.at(static_cast<std::size_t>(m_tabs->currentIndex())));
}

QWidget* KdeDialog::InputPage() {
    auto* layer = with_tip(new QComboBox, "Point layer with one feature per fix");
    auto* selected = with_tip(new QCheckBox, "Leave out the fixes that are not selected in the map");
    auto* field = with_tip(new HintedComboBox, "Field that names the animal of each fix");
    m_binder.Bind(*layer, m_form.cmbPntL, "cmbPntL", [this] { m_form.cmbPntL_Click(); });
    m_binder.Bind(*selected, m_form.chkUseSel, "chkUseSel", [this] { m_form.chkUseSel_Click(); });
    m_binder.Bind(*field, m_form.cmbUIDFLD, "cmbUIDFLD", [this] { m_form.cmbUIDFLD_Click(); });
    auto* input = new QVBoxLayout;
    input->addWidget(caption(m_form.lblPntL, layer));
    input->addWidget(layer);
    input->addWidget(MarkOf(*layer));
    input->addWidget(DegreesNotice());
    input->addWidget(selected);
    input->addWidget(caption(m_form.lblUIDFLD, field));
    input->addWidget(field);
    input->addWidget(MarkOf(*field));

    auto* calculate = with_tip(new QPushButton, "Computes both indices for every animal, in the order of the layer");
    auto* table = new QTableWidget;
    auto* save = with_tip(new QPushButton, "Saves the table as comma-separated text");
    auto* schoener = new QLabel;
    auto* swihart = new QLabel;
    schoener->setWordWrap(true);
    swihart->setWordWrap(true);
    m_binder.Bind(*calculate, m_form.btnCalcIO, "btnCalcIO", [this] { m_form.btnCalcIO_Click(); });
    with_tip(table, "Indices of independence of every animal");
    m_binder.Bind(*table, m_form.datagridIO, "datagridIO");
    m_binder.Bind(*save, m_form.btnIOSave, "btnIOSave", [this] { m_form.btnIOSave_Click(); });
    m_binder.Bind(*schoener, m_form.lblIO1, "lblIO1");
    m_binder.Bind(*swihart, m_form.lblIO2, "lblIO2");
    auto* buttons = row({calculate, save});
    buttons->addStretch();
    auto* independence = new QVBoxLayout;
    independence->addLayout(buttons);
    independence->addWidget(table, 1);
    independence->addWidget(schoener);
    independence->addWidget(swihart);
    independence->addWidget(RemedyLink());
    return page_of({frame("Input", input), frame("Independence of observations", independence)}, false);
}

QLabel* KdeDialog::RemedyLink() {
    auto* link = with_tip(new QLabel, "Opens the guide at the page on estimators, and when each is right");
    link->setObjectName(QStringLiteral("lblRemedy"));
    link->setTextInteractionFlags(Qt::LinksAccessibleByMouse | Qt::LinksAccessibleByKeyboard);
    connect(link, &QLabel::linkActivated, this, [this](const QString& page) { m_guide->OpenAt(page); });
    m_binder.AlsoRefresh([this, link] {
        const QColor colour = ReadableOn(palette().color(QPalette::Window), palette().color(QPalette::Link));
        const QString text = QStringLiteral("<a href=\"which-estimator\" style=\"color:%1\">%2</a>")
                                 .arg(colour.name(), tr("What to do with autocorrelated fixes"));
        if (link->text() != text) link->setText(text);
    });
    return link;
}

QWidget* KdeDialog::DegreesNotice() {
    auto* text = new WrappedLabel;
    text->setWordWrap(true);
    auto* reproject = with_tip(new QPushButton, "Adds a copy in that zone to the map and chooses it");
    m_binder.Bind(*text, m_form.lblDegrees, "lblDegrees");
    m_binder.Bind(*reproject, m_form.btnReproject, "btnReproject", [this] { m_form.btnReproject_Click(); });
    auto* notice = new QFrame;
    notice->setObjectName(QStringLiteral("noticeDegrees"));
    notice->setFrameShape(QFrame::StyledPanel);
    notice->setAutoFillBackground(true);
    notice->setBackgroundRole(QPalette::ToolTipBase);
    text->setForegroundRole(QPalette::ToolTipText);
    auto* layout = new QHBoxLayout(notice);
    layout->addWidget(text, 1);
    layout->addWidget(reproject);
    m_binder.AlsoRefresh([this, notice, text] {
        text->NeedHeight();
        notice->setVisible(!m_form.lblDegrees.Caption.empty());
    });
    return notice;
}

QWidget* KdeDialog::KernelPage() {
    auto* rescale = with_tip(new QCheckBox, "Divides x and y by their standard deviations before smoothing");
    auto* table = new QTableWidget;
    auto* hint = new QLabel;
    hint->setWordWrap(true);
    m_binder.Bind(*rescale, m_form.chkRescale, "chkRescale");
    with_tip(table, "Standard deviations of every animal and their ratio");
    m_binder.Bind(*table, m_form.datagridVar, "datagridVar");
    m_binder.Bind(*hint, m_form.lblVar, "lblVar");
    auto* standardization = new QVBoxLayout;
    standardization->addWidget(rescale);
    standardization->addWidget(hint);
    standardization->addWidget(table, 1);

    auto* fixed = with_tip(new QRadioButton, "The same bandwidth at every fix");
    auto* adaptive = with_tip(new QRadioButton, "Wider kernels where fixes are sparse");
    auto* form = with_tip(new QComboBox, "Shape of the hill that stands on every fix");
    m_binder.Bind(*fixed, m_form.optFixed, "optFixed", [this] { m_form.optFixed_Click(); });
    m_binder.Bind(*adaptive, m_form.optAdaptive, "optAdaptive", [this] { m_form.optAdaptive_Click(); });
    m_binder.Bind(*form, m_form.cmbKernelForm, "cmbKernelForm");
    auto* formRow = row({caption(m_form.lblKernelForm, form), form});
    formRow->addStretch();
    auto* kernel = new QVBoxLayout;
    kernel->addWidget(fixed);
    kernel->addWidget(adaptive);
    kernel->addLayout(formRow);
    return page_of({frame("Standardization", standardization), frame("Kernel parameters", kernel)}, false);
}

QWidget* KdeDialog::BandwidthPage() {
    auto* lscv = with_tip(new QRadioButton, "Searches 0.05 to 2 times the reference bandwidth");
    auto* bcv = with_tip(new QRadioButton, "Searches 0.05 to 3 times the reference bandwidth");
    auto* href = with_tip(new QRadioButton, "The reference bandwidth of each animal");
    auto* manual = with_tip(new QRadioButton, "One bandwidth, or several separated by commas, for all animals");
    auto* proportion = with_tip(new QRadioButton, "One estimate for each proportion");
    auto* bandwidth = number_edit("One bandwidth, or several separated by commas");
    auto* proportions = with_tip(new QLineEdit, "Proportions separated by commas");
    auto* table = new QTableWidget;
    m_binder.Bind(*lscv, m_form.optBE_LSCV, "optBE_LSCV", [this] { m_form.optBE_LSCV_Click(); });
    m_binder.Bind(*bcv, m_form.optBE_BCV, "optBE_BCV", [this] { m_form.optBE_BCV_Click(); });
    m_binder.Bind(*href, m_form.optBE_HREF, "optBE_HREF", [this] { m_form.optBE_HREF_Click(); });
    m_binder.Bind(*manual, m_form.optBE_MANUAL, "optBE_MANUAL", [this] { m_form.optBE_MANUAL_Click(); });
    m_binder.Bind(*bandwidth, m_form.txtBW, "txtBW");
    m_binder.Bind(*proportion, m_form.optPropHref, "optPropHref", [this] { m_form.optPropHref_Click(); });
    m_binder.Bind(*proportions, m_form.txtPropHref, "txtPropHref");
    m_binder.Bind(*table, m_form.datagridHref, "datagridHref", [this] { m_form.datagridHref_Click(); });
    // Three animals and the heading, also where the plot wants the room.
    table->setMinimumHeight(4 * table->verticalHeader()->defaultSectionSize() + 10);
    auto* plot = new ProfilePlotWidget;
    plot->setObjectName(QStringLiteral("plotProfile"));
    m_binder.AlsoRefresh([this, plot] { plot->Show(m_form.plotProfile); });
    auto* choices = new QGridLayout;
    choices->addWidget(lscv, 0, 0, 1, 3);
    choices->addWidget(bcv, 1, 0, 1, 3);
    choices->addWidget(href, 2, 0, 1, 3);
    choices->addWidget(manual, 3, 0);
    choices->addWidget(bandwidth, 3, 1);
    choices->addWidget(UnitLabel(), 3, 2);
    choices->addWidget(MarkOf(*bandwidth), 4, 1, 1, 2);
    choices->addWidget(proportion, 5, 0);
    choices->addWidget(proportions, 5, 1, 1, 2);
    choices->addWidget(MarkOf(*proportions), 6, 1, 1, 2);
    choices->setColumnStretch(1, 1);
    auto* selection = new QVBoxLayout;
    selection->addLayout(choices);
    selection->addWidget(
        with_tip(table, "Reference bandwidth of every animal; the search of the chosen row is plotted below"), 1);
    selection->addWidget(plot, 1);
    return page_of({frame("Bandwidth Selection", selection)}, false);
}

QWidget* KdeDialog::OutputPage() {
    auto* folder = with_tip(new QLineEdit, "Folder for rasters, isopleths and the report");
    folder->setReadOnly(true);
    auto* browse = with_tip(new QPushButton, "Chooses the output folder");
    auto* prefix = with_tip(new QLineEdit, "At most 6 characters; the animal's ID follows");
    prefix->setMaximumWidth(110);
    auto* cell = number_edit("Whole number; smaller than the bandwidth");
    auto* scaling = number_edit("The volume of a complete distribution");
    auto* verbose = with_tip(new QCheckBox, "Writes the profile of every search into the report");
    m_binder.Bind(*folder, m_form.txtOutFolder, "txtOutFolder");
    m_binder.Bind(*browse, m_form.btnFolder, "btnFolder", [this] { m_form.btnFolder_Click(); });
    m_binder.Bind(*prefix, m_form.txtR, "txtR", [this] { m_form.txtR_Change(); });
    m_binder.Bind(*cell, m_form.txtCellSize, "txtCellSize");
    m_binder.Bind(*scaling, m_form.txtScaling, "txtScaling");
    auto* addToMap = with_tip(new QCheckBox, "Adds rasters and isopleths to the map as one group when the run ends");
    auto* html = with_tip(new QCheckBox, "Puts a page with tables and pictures of all animals into the output folder");
    m_binder.Bind(*verbose, m_form.chkVerbose, "chkVerbose");
    m_binder.Bind(*addToMap, m_form.chkAddToMap, "chkAddToMap");
    m_binder.Bind(*html, m_form.chkHtml, "chkHtml");
    auto* package =
        with_tip(new QCheckBox,
                 "Puts isopleths, fixes and a summary of all animals into the file RANGES.gpkg of the output "
                 "folder; later runs add to it");
    m_binder.Bind(*package, m_form.chkGpkg, "chkGpkg");
    auto* output = new QGridLayout;
    output->addWidget(caption(m_form.lblOutFolder, folder), 0, 0, 1, 3);
    output->addWidget(folder, 1, 0, 1, 2);
    output->addWidget(browse, 1, 2);
    output->addWidget(MarkOf(*folder), 2, 0, 1, 3);
    output->addWidget(caption(m_form.lblR, prefix), 3, 0);
    output->addWidget(prefix, 3, 1);
    output->addWidget(MarkOf(*prefix), 4, 1, 1, 2);
    output->addWidget(caption(m_form.lblCellSize, cell), 5, 0);
    output->addWidget(cell, 5, 1);
    output->addWidget(UnitLabel(), 5, 2);
    output->addWidget(MarkOf(*cell), 6, 1, 1, 2);
    output->addWidget(caption(m_form.lblScaling, scaling), 7, 0);
    output->addWidget(scaling, 7, 1);
    output->addWidget(MarkOf(*scaling), 8, 1, 1, 2);
    output->addLayout(row({verbose, addToMap}), 9, 0, 1, 3);
    output->addLayout(row({html, package}), 10, 0, 1, 3);
    output->setColumnStretch(1, 1);

    auto* bounds = with_tip(new QCheckBox, "Contours that enclose these percentages of the volume");
    auto* percentages =
        with_tip(new QLineEdit, "Percentages separated by commas; donuts need them in increasing order");
    auto* lines = with_tip(new QCheckBox, "One line for each percentage and contour");
    auto* polygons = with_tip(new QCheckBox, "The area within each percentage, with its size and perimeter");
    auto* donuts = with_tip(new QCheckBox, "The area between each percentage and the one before it");
    m_binder.Bind(*bounds, m_form.chkBnds, "chkBnds", [this] { m_form.chkBnds_Click(); });
    m_binder.Bind(*percentages, m_form.txtBnds, "txtBnds");
    m_binder.Bind(*lines, m_form.chkLines, "chkLines");
    m_binder.Bind(*polygons, m_form.chkPolys, "chkPolys");
    m_binder.Bind(*donuts, m_form.chkDonuts, "chkDonuts");
    auto* kinds = row({lines, polygons, donuts});
    kinds->addStretch();
    auto* isopleths = new QVBoxLayout;
    isopleths->addLayout(row({bounds, percentages}));
    isopleths->addWidget(MarkOf(*percentages));
    isopleths->addLayout(kinds);

    auto* full = with_tip(new QRadioButton, "One grid for all animals, so that their rasters fit upon each other");
    auto* buffer = number_edit("Distance added on every side of the layer");
    auto* small = with_tip(new QRadioButton, "The animal's fixes and four bandwidths on every side");
    auto* reference = with_tip(new QRadioButton, "The grid of a raster layer of the map");
    auto* rasters = with_tip(new QComboBox, "Raster whose extent and cells are taken over");
    m_binder.Bind(*full, m_form.optFull, "optFull", [this] { m_form.optFull_Click(); });
    m_binder.Bind(*buffer, m_form.txtBuffer, "txtBuffer");
    m_binder.Bind(*small, m_form.optSmall, "optSmall", [this] { m_form.optSmall_Click(); });
    m_binder.Bind(*reference, m_form.optExtRef, "optExtRef", [this] { m_form.optExtRef_Click(); });
    m_binder.Bind(*rasters, m_form.cmbExtRef, "cmbExtRef");
    auto* bufferRow = row({buffer, UnitLabel()});
    bufferRow->setContentsMargins(24, 0, 0, 0);
    bufferRow->addStretch();
    auto* used = new WrappedLabel;
    m_binder.Bind(*used, m_form.lblBuffer, "lblBuffer");
    m_binder.AlsoRefresh([this, used] { used->setVisible(!m_form.lblBuffer.Caption.empty()); });
    auto* usedRow = row({used});
    usedRow->setContentsMargins(24, 0, 0, 0);
    auto* rasterRow = row({rasters});
    rasterRow->setContentsMargins(24, 0, 0, 0);
    auto* extents = new QVBoxLayout;
    extents->addWidget(full);
    extents->addLayout(bufferRow);
    extents->addWidget(MarkOf(*buffer));
    extents->addLayout(usedRow);
    extents->addWidget(small);
    extents->addWidget(reference);
    extents->addLayout(rasterRow);
    extents->addWidget(MarkOf(*rasters));
    return page_of({frame("Output", output), frame("Isopleths", isopleths), frame("Extents", extents)}, true);
}

QLayout* KdeDialog::Footer() {
    auto* status = with_tip(new QLineEdit, "What the analysis is doing");
    status->setReadOnly(true);
    auto* progress = new QProgressBar;
    auto* silent = with_tip(new QCheckBox, "Keeps the warnings of single animals out of message boxes");
    auto* load = with_tip(new QPushButton, "Reads the choices of all pages but the first from a file");
    auto* save = with_tip(new QPushButton, "Writes the choices of all pages but the first into a file");
    auto* suggest =
        with_tip(new QPushButton, "Fills in what suits the highlighted layer: animals, cell size, isopleths, extent");
    auto* last = with_tip(new QPushButton, "Fills in what this project ran last");
    auto* ok = with_tip(new QPushButton, "Runs the analysis");
    auto* exit = with_tip(new QPushButton, "Closes the window; during a run it asks whether to stop that");
    auto* help = with_tip(new QPushButton(tr("Help")), "Opens the guide at what this page is about (F1)");
    help->setObjectName(QStringLiteral("btnHelp"));
    help->setAutoDefault(false);
    m_guide = new GuideOpener(*this, [this] { return GuidePage(); });
    connect(help, &QPushButton::clicked, m_guide, [this] { m_guide->Open(); });
    ok->setDefault(true);
    m_binder.Bind(*status, m_form.txtStatus, "txtStatus");
    m_binder.Bind(*progress, m_form.PBar, "PBar");
    m_binder.Bind(*silent, m_form.chkSilent, "chkSilent");
    m_binder.Bind(*load, m_form.btnLoadSettings, "btnLoadSettings", [this] { m_form.btnLoadSettings_Click(); });
    m_binder.Bind(*save, m_form.btnSaveSettings, "btnSaveSettings", [this] { m_form.btnSaveSettings_Click(); });
    m_binder.Bind(*suggest, m_form.btnSuggest, "btnSuggest", [this] { m_form.btnSuggest_Click(); });
    m_binder.Bind(*last, m_form.btnLastSettings, "btnLastSettings", [this] { m_form.btnLastSettings_Click(); });
    m_binder.Bind(*ok, m_form.btnOK, "btnOK", [this] {
        m_form.FocusOnFirstProblem();
        m_form.btnOK_Click();
    });
    m_binder.Bind(*exit, m_form.btnExit, "btnExit", [this] { m_form.btnExit_Click(); });
    auto* layout = new QVBoxLayout;
    layout->addLayout(row({status, progress}));
    auto* buttons = row({suggest, last, load, save, silent});
    buttons->addStretch();
    buttons->addWidget(help);
    buttons->addWidget(ok);
    buttons->addWidget(exit);
    layout->addLayout(buttons);
    return layout;
}

QLabel* KdeDialog::UnitLabel() {
    auto* label = new QLabel;
    m_unitLabels.push_back(label);
    return label;
}

void KdeDialog::ShowUnits() {
    QString unit;
    try {
        unit = ToQString(m_form.PointLayer().Feature->FeatureClass()->Reference().UnitName);
    } catch (const platform::RuntimeError&) {
        // No layer, no unit.
    }
    for (QLabel* label : m_unitLabels) label->setText(unit);
}

void KdeDialog::reject() {
    // Escape and the window's close button are the Exit button.
    m_form.btnExit_Click();
    m_binder.Refresh();
}

void KdeDialog::changeEvent(QEvent* event) {
    QDialog::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) m_binder.Refresh();
}

void KdeDialog::closeEvent(QCloseEvent* event) {
    event->ignore();
    reject();
}

}  // namespace wxl::qgis
