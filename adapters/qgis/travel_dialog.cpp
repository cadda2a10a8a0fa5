#include "adapters/qgis/travel_dialog.h"

#include "adapters/qgis/guide_window.h"
#include "adapters/qgis/keyboard.h"
#include "adapters/qgis/qt_text.h"

#include <algorithm>
#include <array>
#include <limits>
#include <QCheckBox>
#include <QGridLayout>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QShowEvent>
#include <QSlider>

namespace wxl::qgis {

namespace {

/// Where a window of that size hides as little of the map as the screen allows: below the map, to its left or right,
/// or above it.
QPoint place_beside(const QRect& map, const QSize& size, const QRect& screen) {
    const std::array<QPoint, 4> places = {
        QPoint(map.left(), map.bottom() + 1), QPoint(map.left() - size.width(), map.bottom() + 1 - size.height()),
        QPoint(map.right() + 1, map.bottom() + 1 - size.height()), QPoint(map.left(), map.top() - size.height())};
    QPoint best;
    int leastHidden = std::numeric_limits<int>::max();
    for (const QPoint& place : places) {
        const int x = std::clamp(place.x(), screen.left(), std::max(screen.left(), screen.right() + 1 - size.width()));
        const int y = std::clamp(place.y(), screen.top(), std::max(screen.top(), screen.bottom() + 1 - size.height()));
        const QRect covered = map & QRect({x, y}, size);
        const int hidden = covered.width() * covered.height();
        if (hidden >= leastHidden) continue;
        leastHidden = hidden;
        best = {x, y};
    }
    return best;
}

}  // namespace

TravelDialog::TravelDialog(movement::frmOVI& form, QgisHost& host, QWidget* map)
    : QDialog(map ? map->window() : nullptr), m_form(form), m_map(map) {
    setObjectName(QStringLiteral("frmOVI"));
    setWindowTitle(ToQString(form.Caption));
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(Track());
    layout->addLayout(Buttons());
    layout->addLayout(MapButtons());
    form.Form_Load();
    m_yieldToken = host.OnYield([this] { m_binder.Refresh(); });
    m_binder.Refresh();
    AssignMnemonics(*this);
    OrderTabKey(*this);
    NameForScreenReaders(*this);
}

QLayout* TravelDialog::Track() {
    auto* fix = new QLabel;
    auto* counter = new QLabel;
    auto* stats = new QLabel;
    auto* when = new QLabel;
    auto* selected = new QLabel;
    auto* notice = new QLabel;
    selected->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    notice->setWordWrap(true);
    auto* position = new QSlider(Qt::Horizontal);
    auto* delayLabel = new QLabel;
    auto* delay = new QSlider(Qt::Horizontal);
    auto* seconds = new QLineEdit;
    position->setToolTip(tr("Position along the track"));
    delay->setToolTip(tr("Time between two steps of automatic play"));
    seconds->setMaximumWidth(70);
    seconds->setToolTip(tr("Seconds between two steps"));
    seconds->setAccessibleName(tr("Seconds between two steps"));
    position->setAccessibleName(tr("Fix"));
    delayLabel->setBuddy(delay);
    fix->setBuddy(position);
    m_binder.Bind(*fix, m_form.Label1, "Label1");
    m_binder.Bind(*counter, m_form.lblfix, "lblfix");
    m_binder.Bind(*stats, m_form.lblStats, "lblStats");
    m_binder.Bind(*when, m_form.LblDateAndTime1, "LblDateAndTime1");
    m_binder.Bind(*selected, m_form.lblSelected, "lblSelected");
    m_binder.Bind(*notice, m_form.lblNotice, "lblNotice");
    m_binder.AlsoRefresh([this, notice] { notice->setVisible(!m_form.lblNotice.Caption.empty()); });
    m_binder.Bind(*position, m_form.Slider, "Slider", [this] { m_form.Slider_Change(); });
    m_binder.Bind(*delayLabel, m_form.Label2, "Label2");
    m_binder.Bind(*delay, m_form.SlideSec, "SlideSec", [this] { m_form.SlideSec_Change(); });
    m_binder.Bind(*seconds, m_form.TxtSec, "TxtSec");
    auto* track = new QGridLayout;
    track->addWidget(fix, 0, 0);
    track->addWidget(position, 0, 1);
    track->addWidget(counter, 0, 2);
    track->addWidget(delayLabel, 1, 0);
    track->addWidget(delay, 1, 1);
    track->addWidget(seconds, 1, 2);
    track->addWidget(when, 2, 0, 1, 2);
    track->addWidget(selected, 2, 2);
    track->addWidget(stats, 3, 0, 1, 3);
    track->addWidget(notice, 4, 0, 1, 3);
    track->setColumnStretch(1, 1);
    return track;
}

QLayout* TravelDialog::Buttons() {
    auto* play = new QPushButton;
    auto* stop = new QPushButton;
    auto* forward = new QPushButton;
    auto* back = new QPushButton;
    auto* erase = new QPushButton;
    auto* save = new QPushButton;
    auto* oneStep = new QCheckBox;
    auto* keep = new QCheckBox;
    auto* follow = new QCheckBox;
    play->setDefault(true);
    play->setToolTip(tr("Draws the track leg by leg, from the present fix on"));
    stop->setToolTip(tr("Stops playing"));
    forward->setToolTip(tr("Draws the leg to the next fix"));
    back->setToolTip(tr("Draws the leg back to the fix before"));
    erase->setToolTip(tr("Takes the drawn legs off the map"));
    save->setToolTip(tr("Saves the drawn legs as a shapefile and adds it to the map"));
    oneStep->setToolTip(tr("Draws one leg at a time"));
    keep->setToolTip(tr("Leaves the drawn legs on the map"));
    follow->setToolTip(tr("Moves the map when a leg ends outside of it"));
    m_binder.Bind(*play, m_form.CmdTrackMoose, "CmdTrackMoose", [this] { m_form.CmdTrackMoose_Click(); });
    m_binder.Bind(*stop, m_form.cmdStop, "cmdStop", [this] { m_form.cmdStop_Click(); });
    m_binder.Bind(*forward, m_form.CmbStep, "CmbStep", [this] { m_form.CmbStep_Click(); });
    m_binder.Bind(*back, m_form.cmdStepBack, "cmdStepBack", [this] { m_form.cmdStepBack_Click(); });
    m_binder.Bind(*erase, m_form.cmdDeleteGraphic, "cmdDeleteGraphic", [this] { m_form.cmdDeleteGraphic_Click(); });
    m_binder.Bind(*save, m_form.CmdSaveTravel, "CmdSaveTravel", [this] { m_form.CmdSaveTravel_Click(); });
    m_binder.Bind(*oneStep, m_form.cbOneStep, "cbOneStep", [this] { m_form.cbOneStep_Click(); });
    m_binder.Bind(*keep, m_form.CBKeepGraphic, "CBKeepGraphic", [this] { m_form.CBKeepGraphic_Click(); });
    m_binder.Bind(*follow, m_form.chkFollow, "chkFollow");
    auto* buttons = new QGridLayout;
    buttons->addWidget(play, 0, 0);
    buttons->addWidget(stop, 0, 1);
    buttons->addWidget(back, 0, 2);
    buttons->addWidget(forward, 0, 3);
    buttons->addWidget(erase, 1, 0, 1, 2);
    buttons->addWidget(save, 1, 2, 1, 2);
    buttons->addWidget(oneStep, 2, 0, 1, 2);
    buttons->addWidget(keep, 2, 2, 1, 2);
    buttons->addWidget(follow, 3, 0, 1, 2);
    return buttons;
}

/// The map cannot be reached while the player is open: what is needed of it stands here.
QLayout* TravelDialog::MapButtons() {
    auto* nearer = new QPushButton;
    auto* farther = new QPushButton;
    auto* whole = new QPushButton;
    nearer->setToolTip(tr("Shows the map around this fix twice as large"));
    farther->setToolTip(tr("Shows twice as much of the map around this fix"));
    whole->setToolTip(tr("Shows all selected fixes"));
    m_binder.Bind(*nearer, m_form.cmdZoomIn, "cmdZoomIn", [this] { m_form.cmdZoomIn_Click(); });
    m_binder.Bind(*farther, m_form.cmdZoomOut, "cmdZoomOut", [this] { m_form.cmdZoomOut_Click(); });
    m_binder.Bind(*whole, m_form.cmdZoomTrack, "cmdZoomTrack", [this] { m_form.cmdZoomTrack_Click(); });
    auto* help = new QPushButton(tr("Help"));
    help->setObjectName(QStringLiteral("btnHelp"));
    help->setToolTip(tr("Opens the guide at the track player (F1)"));
    help->setAutoDefault(false);
    auto* guide = new GuideOpener(*this, [] { return QStringLiteral("movement-tools#the-track-player-in-qgis"); });
    connect(help, &QPushButton::clicked, guide, [guide] { guide->Open(); });
    auto* buttons = new QHBoxLayout;
    for (QWidget* widget : std::initializer_list<QWidget*>{nearer, farther, whole, help}) buttons->addWidget(widget);
    return buttons;
}

void TravelDialog::reject() {
    m_form.Form_Unload();
    QDialog::reject();
}

void TravelDialog::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    if (!m_map) return;
    move(place_beside({m_map->mapToGlobal(QPoint(0, 0)), m_map->size()}, frameGeometry().size(),
                      m_map->screen()->availableGeometry()));
}

}  // namespace wxl::qgis
