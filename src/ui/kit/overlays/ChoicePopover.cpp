#include "ui/kit/overlays/ChoicePopover.h"

#include "ui/kit/speech/Accessibility.h"

#include <QAccessible>
#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QListView>
#include <QVBoxLayout>

namespace korvex::ui {

namespace {

constexpr int kLongestTyped = 100;

} // namespace

ChoicePopover::ChoicePopover(QListView* list, const Theme& theme, QWidget* window)
    : Popover(theme, window), m_field(new QLineEdit(this)), m_list(list) {
    m_list->setParent(this);
}

ChoicePopover::~ChoicePopover() = default;

void ChoicePopover::setUp(const Names& names) {
    setAccessibleName(names.choice);
    m_field->setPlaceholderText(names.field);
    m_field->setAccessibleName(names.field);
    Accessibility::nameClearButton(*m_field, tr("Clear"));
    m_field->setMaxLength(kLongestTyped);
    m_field->installEventFilter(this);
    m_list->setAccessibleName(names.list);
    m_list->setFrameShape(QFrame::NoFrame);
    m_list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_list->setTextElideMode(Qt::ElideRight);
    m_list->setUniformItemSizes(true);
    m_list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_list->setFocusPolicy(Qt::NoFocus); // the keys of the field walk in it
    auto quiet = m_list->palette();
    quiet.setColor(QPalette::Base, theme().colors().raised);
    m_list->setPalette(quiet);
    auto* const column = new QVBoxLayout(this);
    const auto margin = theme().space(Space::medium);
    column->setContentsMargins(margin, margin, margin, margin);
    column->setSpacing(margin);
    column->addWidget(m_field);
    column->addWidget(m_list);
    connect(m_field, &QLineEdit::textChanged, this, [this] { fill(); });
    connect(m_list, &QListView::clicked, this, [this](const QModelIndex& index) {
        m_list->setCurrentIndex(index);
        choose();
    });
    connect(m_list->selectionModel(), &QItemSelectionModel::currentChanged, this,
            [this](const QModelIndex& index) {
                // The list never has the keyboard; a screen reader is told where the keys are.
                QAccessibleEvent event(m_list, QAccessible::Focus);
                event.setChild(index.row());
                QAccessible::updateAccessibility(&event);
            });
    setFocusProxy(m_field);
}

bool ChoicePopover::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_field && event->type() == QEvent::KeyPress) {
        switch (static_cast<QKeyEvent*>(event)->key()) {
        case Qt::Key_Up:
        case Qt::Key_Down:
        case Qt::Key_PageUp:
        case Qt::Key_PageDown:
            QApplication::sendEvent(m_list, event);
            return true;
        default:
            break;
        }
    }
    return Popover::eventFilter(watched, event);
}

void ChoicePopover::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        choose();
    } else {
        Popover::keyPressEvent(event);
    }
}

} // namespace korvex::ui
