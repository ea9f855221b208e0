#include "ui/editor/TablePopover.h"

#include "richtext/table/RichTextTable.h"

#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QSpinBox>

namespace korvex::ui {

using richtext::RichTextTable;

TablePopover::TablePopover(const Theme& theme, QWidget* window)
    : Popover(theme, window),
      m_size(new QLabel(this)),
      m_columns(
          field(tr("Columns"), RichTextTable::kDefaultColumns, RichTextTable::kMaximumColumns)),
      m_rows(field(tr("Rows"), RichTextTable::kDefaultRows, RichTextTable::kMaximumRows)),
      m_limits(new QLabel(tr("Up to %1 rows and %2 columns")
                              .arg(RichTextTable::kMaximumRows)
                              .arg(RichTextTable::kMaximumColumns),
                          this)),
      m_insert(new QPushButton(tr("Insert table"), this)) {
    setAccessibleName(tr("New table"));
    m_size->setFont(theme.sectionFont());
    m_limits->setFont(theme.smallFont());
    m_limits->setForegroundRole(QPalette::PlaceholderText);
    m_insert->setDefault(true);
    layOut();
    connect(m_insert, &QPushButton::clicked, this, &TablePopover::insert);
    showSize();
    wrapWords();
    m_columns->setFocus();
    m_columns->selectAll();
    setFocusProxy(m_columns);
}

QSpinBox* TablePopover::field(const QString& title, int value, int maximum) {
    auto* const result = new QSpinBox(this);
    result->setRange(1, maximum);
    result->setValue(value);
    result->setAccessibleName(title);
    connect(result, &QSpinBox::valueChanged, this, &TablePopover::showSize);
    return result;
}

void TablePopover::layOut() {
    auto* const grid = new QGridLayout(this);
    const auto margin = theme().space(Space::large);
    grid->setContentsMargins(margin, margin, margin, margin);
    grid->setVerticalSpacing(theme().space(Space::medium));
    grid->setHorizontalSpacing(margin);
    grid->addWidget(m_size, 0, 0, 1, 2);
    int row = 1;
    for (auto* const each : {m_columns, m_rows}) {
        auto* const label = new QLabel(each->accessibleName(), this);
        label->setBuddy(each);
        grid->addWidget(label, row, 0);
        grid->addWidget(each, row++, 1);
    }
    grid->addWidget(m_limits, row++, 0, 1, 2);
    grid->addWidget(m_insert, row, 0, 1, 2, Qt::AlignRight);
    grid->setColumnStretch(1, 1);
}

/// As wide as the words are in one line; in a window that is narrower they wrap.
void TablePopover::wrapWords() {
    setPanelWidth(layout()->totalSizeHint().width());
    for (auto* const words : {m_size, m_limits}) {
        words->setWordWrap(true);
    }
}

void TablePopover::showSize() {
    const auto columns = m_columns->value();
    const auto rows = m_rows->value();
    m_size->setText(
        tr("%1 × %2").arg(tr("%n column(s)", nullptr, columns), tr("%n row(s)", nullptr, rows)));
}

void TablePopover::insert() {
    const auto rows = m_rows->value();
    const auto columns = m_columns->value();
    closeNow();
    Q_EMIT chosen(rows, columns);
}

void TablePopover::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        insert();
    } else {
        Popover::keyPressEvent(event);
    }
}

} // namespace korvex::ui
