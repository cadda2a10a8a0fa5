#include "adapters/qgis/form_binder.h"

#include "adapters/qgis/qt_text.h"

#include <algorithm>
#include <cmath>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QGuiApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpression>
#include <QSlider>
#include <QTableWidget>
#include <QTabWidget>

namespace wxl::qgis {
namespace {

constexpr int kWholeText = Qt::UserRole;  ///< of a table's cell: its text with all digits

void show_background(QWidget& widget, platform::BackColor colour) {
    QPalette palette = widget.palette();
    const QPalette::ColorRole role = colour == platform::BackColor::kWindow ? QPalette::Base : QPalette::Button;
    palette.setColor(QPalette::Base, QPalette().color(QPalette::Active, role));
    palette.setColor(QPalette::Disabled, QPalette::Base, QPalette().color(QPalette::Active, role));
    widget.setPalette(palette);
}

/// Five significant digits of a number with a fraction, whole numbers and other texts as they are.
QString shortened(const QString& text) {
    bool isNumber = false;
    const double value = text.toDouble(&isNumber);
    if (!isNumber || !std::isfinite(value) || !text.contains(QRegularExpression(QStringLiteral("[.eE]")))) return text;
    const QString digits = std::abs(value) < 1e5 ? QString::number(value, 'g', 5) : QString::number(value, 'f', 0);
    return digits.size() < text.size() ? digits : text;
}

/// The chosen cells with all their digits, as a spreadsheet takes them.
QString chosen_cells(const QTableWidget& table) {
    QModelIndexList cells = table.selectionModel()->selectedIndexes();
    std::sort(cells.begin(), cells.end());
    QString text;
    for (int i = 0; i < cells.size(); ++i) {
        if (i > 0) text += cells[i].row() == cells[i - 1].row() ? QLatin1Char('\t') : QLatin1Char('\n');
        text += cells[i].data(kWholeText).toString();
    }
    return text;
}

/// Ctrl+C takes all digits, not those that are shown.
class WholeCopies final : public QObject {
public:
    explicit WholeCopies(QTableWidget& table) : QObject(&table), m_table(table) { table.installEventFilter(this); }

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() != QEvent::KeyPress || !static_cast<QKeyEvent*>(event)->matches(QKeySequence::Copy))
            return QObject::eventFilter(watched, event);
        QGuiApplication::clipboard()->setText(chosen_cells(m_table));
        return true;
    }

private:
    QTableWidget& m_table;
};

void show_table(QTableWidget& widget, const platform::DataGrid& grid) {
    QStringList headers;
    for (const std::string& column : grid.Columns) headers << ToQString(column);
    const int rows = static_cast<int>(grid.Rows.size());
    widget.setColumnCount(static_cast<int>(headers.size()));
    widget.setHorizontalHeaderLabels(headers);
    widget.setRowCount(rows);
    for (int row = 0; row < rows; ++row) {
        const auto& cells = grid.Rows[static_cast<std::size_t>(row)];
        for (int column = 0; column < headers.size() && column < static_cast<int>(cells.size()); ++column) {
            const QString whole = ToQString(cells[static_cast<std::size_t>(column)]);
            // The first column names the animal: no number, whatever it looks like.
            const QString shown = column > 0 ? shortened(whole) : whole;
            auto* item = new QTableWidgetItem(shown);
            item->setData(kWholeText, whole);
            if (shown != whole) item->setToolTip(whole);
            if (column > 0) item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
            widget.setItem(row, column, item);
        }
    }
    if (!headers.isEmpty()) widget.horizontalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);
    widget.setVisible(grid.Visible);
}

}  // namespace

void FormBinder::Run(const Handler& change, const Handler& handler) {
    if (m_refreshing) return;
    change();
    if (handler) handler();
    Refresh();
}

void FormBinder::Refresh() {
    if (m_refreshing) return;
    m_refreshing = true;
    for (const Handler& refresh : m_refreshers) refresh();
    m_refreshing = false;
}

void FormBinder::Bind(QLineEdit& widget, platform::TextBox& control, const char* name, Handler changed) {
    widget.setObjectName(QLatin1String(name));
    connect(&widget, &QLineEdit::textChanged, this,
            [this, &control, changed = std::move(changed)](const QString& text) {
                Run([&] { control.Text = FromQString(text); }, changed);
            });
    m_refreshers.emplace_back([&widget, &control] {
        // Setting an equal text would move the cursor of somebody who types.
        if (const QString text = ToQString(control.Text); widget.text() != text) widget.setText(text);
        widget.setEnabled(control.Enabled);
        widget.setPlaceholderText(ToQString(control.Hint));
        show_background(widget, control.Back);
    });
}

void FormBinder::Bind(QCheckBox& widget, platform::CheckBox& control, const char* name, Handler clicked) {
    widget.setObjectName(QLatin1String(name));
    widget.setText(ToQString(control.Caption).trimmed());
    connect(&widget, &QCheckBox::toggled, this, [this, &control, clicked = std::move(clicked)](bool checked) {
        Run([&] { control.Value = checked ? 1 : 0; }, clicked);
    });
    m_refreshers.emplace_back([&widget, &control] {
        widget.setChecked(control.Value == 1);
        widget.setEnabled(control.Enabled);
    });
}

void FormBinder::Bind(QRadioButton& widget, platform::OptionButton& control, const char* name, Handler clicked) {
    widget.setObjectName(QLatin1String(name));
    widget.setText(ToQString(control.Caption));
    connect(&widget, &QRadioButton::clicked, this,
            [this, &control, clicked = std::move(clicked)] { Run([&] { control.Value = true; }, clicked); });
    m_refreshers.emplace_back([&widget, &control] {
        // Siblings exclude each other, as arrow keys need it, but for what the form has just cleared.
        widget.setAutoExclusive(false);
        widget.setChecked(control.Value);
        widget.setAutoExclusive(true);
        widget.setEnabled(control.Enabled);
    });
}

void FormBinder::Bind(QComboBox& widget, platform::ComboBox& control, const char* name, Handler clicked) {
    widget.setObjectName(QLatin1String(name));
    connect(&widget, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            [this, &control, clicked = std::move(clicked)](int index) {
                Run([&] { control.ListIndex = index; }, clicked);
            });
    m_refreshers.emplace_back([&widget, &control] {
        QStringList items;
        for (const std::string& item : control.Items) items << ToQString(item);
        QStringList shown;
        for (int i = 0; i < widget.count(); ++i) shown << widget.itemText(i);
        if (items != shown) {
            widget.clear();
            widget.addItems(items);
        }
        widget.setCurrentIndex(control.ListIndex);
        widget.setPlaceholderText(ToQString(control.Hint));
        widget.setEnabled(control.Enabled);
        show_background(widget, control.Back);
    });
}

void FormBinder::Bind(QPushButton& widget, platform::Button& control, const char* name, Handler clicked) {
    widget.setObjectName(QLatin1String(name));
    widget.setText(ToQString(control.Caption));
    connect(&widget, &QPushButton::clicked, this, [this, clicked = std::move(clicked)] { Run([] {}, clicked); });
    m_refreshers.emplace_back([&widget, &control] { widget.setEnabled(control.Enabled); });
}

void FormBinder::Bind(QLabel& widget, platform::Label& control, const char* name) {
    widget.setObjectName(QLatin1String(name));
    widget.setTextFormat(Qt::PlainText);
    m_refreshers.emplace_back([&widget, &control] {
        widget.setText(ToQString(control.Caption));
        widget.setEnabled(control.Enabled);
    });
}

void FormBinder::Bind(QTableWidget& widget, platform::DataGrid& control, const char* name, Handler chosen) {
    widget.setObjectName(QLatin1String(name));
    widget.setEditTriggers(QAbstractItemView::NoEditTriggers);
    widget.setAlternatingRowColors(true);
    widget.setTabKeyNavigation(false);
    new WholeCopies(widget);
    widget.verticalHeader()->setVisible(false);
    const int rowHeight = widget.fontMetrics().height() + 6;
    widget.verticalHeader()->setMinimumSectionSize(rowHeight);
    widget.verticalHeader()->setDefaultSectionSize(rowHeight);
    widget.horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    const bool hasSelection = chosen != nullptr;
    if (hasSelection) {
        widget.setSelectionBehavior(QAbstractItemView::SelectRows);
        widget.setSelectionMode(QAbstractItemView::SingleSelection);
        connect(&widget, &QTableWidget::currentCellChanged, this,
                [this, &control, chosen = std::move(chosen)](int row, int, int last, int) {
                    if (row != last) Run([&] { control.CurrentRow = row; }, chosen);
                });
    }
    // A table of thousands of animals is laid out again only when it has changed.
    m_refreshers.emplace_back([&widget, &control, hasSelection, shown = platform::DataGrid{}, first = true]() mutable {
        const bool same = !first && shown.Columns == control.Columns && shown.Rows == control.Rows;
        if (!same) show_table(widget, control);
        if (!same) shown = control;
        first = false;
        if (hasSelection && widget.currentRow() != control.CurrentRow) widget.setCurrentCell(control.CurrentRow, 0);
    });
}

void FormBinder::Bind(QProgressBar& widget, platform::ProgressBar& control, const char* name) {
    widget.setObjectName(QLatin1String(name));
    widget.setRange(0, 1000);
    m_refreshers.emplace_back([&widget, &control] {
        const double range = control.Maximum - control.Minimum;
        widget.setValue(range > 0.0 ? static_cast<int>(1000.0 * (control.Value - control.Minimum) / range) : 0);
    });
}

void FormBinder::Bind(QSlider& widget, platform::Slider& control, const char* name, Handler changed) {
    widget.setObjectName(QLatin1String(name));
    connect(&widget, &QSlider::valueChanged, this, [this, &control, changed = std::move(changed)](int value) {
        Run([&] { control.Value = value; }, changed);
    });
    m_refreshers.emplace_back([&widget, &control] {
        widget.setRange(control.Minimum, control.Maximum);
        widget.setValue(control.Value);
        widget.setEnabled(control.Enabled);
    });
}

void FormBinder::Bind(QTabWidget& widget, platform::Tab& control, const char* name, std::function<void(int)> clicked) {
    widget.setObjectName(QLatin1String(name));
    connect(&widget, &QTabWidget::currentChanged, this, [this, &control, clicked = std::move(clicked)](int page) {
        const int previous = control.Current;
        Run([&] { control.Current = page; }, [&] { clicked(previous); });
    });
    m_refreshers.emplace_back([&widget, &control] { widget.setCurrentIndex(control.Current); });
}

}  // namespace wxl::qgis
