#include "ui/editor/LinkPopover.h"

#include "ui/editor/LinkTarget.h"
#include "ui/kit/controls/FlowLayout.h"
#include "ui/kit/controls/RefusalLabel.h"

#include <QKeyEvent>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>

namespace korvex::ui {

LinkPopover::LinkPopover(const QString& target, const Theme& theme, QWidget* window)
    : Popover(theme, window),
      m_original(target),
      m_target(new QLineEdit(target, this)),
      m_error(new RefusalLabel(theme, this)),
      m_open(new QPushButton(tr("Open"), this)),
      m_remove(new QPushButton(tr("Remove link"), this)),
      m_save(new QPushButton(target.isEmpty() ? tr("Add link") : tr("Save"), this)) {
    setAccessibleName(tr("Link"));
    // A stored target may be longer than one that is typed.
    m_target->setMaxLength(std::max(kMaximumLinkLength, static_cast<int>(target.size())));
    m_target->setText(target);
    m_target->setPlaceholderText(tr("example.org or name@example.org"));
    m_target->setAccessibleName(tr("Target of the link"));
    m_target->selectAll();
    m_open->setVisible(!target.isEmpty());
    m_remove->setVisible(!target.isEmpty());
    m_save->setDefault(true);
    layOut();
    connect(m_target, &QLineEdit::textChanged, this, &LinkPopover::showTarget);
    connect(m_save, &QPushButton::clicked, this, &LinkPopover::save);
    connect(m_remove, &QPushButton::clicked, this, [this] {
        closeNow();
        Q_EMIT chosen(QString());
    });
    connect(m_open, &QPushButton::clicked, this, [this] {
        if (const auto valid = linkTarget(m_target->text())) {
            Q_EMIT openRequested(*valid);
        }
    });
    showTarget();
    m_target->setFocus();
    setFocusProxy(m_target);
}

void LinkPopover::layOut() {
    const auto margin = theme().space(Space::large);
    setPanelWidth(theme().scaled(kPanelMeasure));
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(margin, margin, margin, margin);
    column->setSpacing(theme().space(Space::medium));
    column->addWidget(m_target);
    column->addWidget(m_error);
    auto* const buttons = new FlowLayout;
    buttons->setSpacing(theme().space(Space::medium));
    for (auto* const button : {m_open, m_remove, m_save}) {
        buttons->addWidget(button);
    }
    column->addLayout(buttons);
}

void LinkPopover::dismiss() {
    if (m_target->text().trimmed() == m_original) {
        closeNow();
    } else {
        save();
    }
}

void LinkPopover::save() {
    const auto typed = m_target->text().trimmed();
    if (typed == m_original || (typed.isEmpty() && m_original.isEmpty())) {
        closeNow();
        return;
    }
    const auto target = typed.isEmpty() ? QString() : linkTarget(typed);
    if (!target) {
        showError(tr("A link is a web address or a mail address."));
        return;
    }
    closeNow();
    Q_EMIT chosen(*target);
}

void LinkPopover::showTarget() {
    changed();
    m_open->setEnabled(linkTarget(m_target->text()).has_value());
    showError(QString());
}

void LinkPopover::showError(const QString& message) {
    m_error->say(message);
    if (isVisible()) {
        placeAgain();
    }
}

void LinkPopover::keyPressEvent(QKeyEvent* event) {
    if (event->key() != Qt::Key_Return && event->key() != Qt::Key_Enter) {
        Popover::keyPressEvent(event);
        return;
    }
    for (auto* const button : {m_open, m_remove}) {
        if (button->hasFocus()) {
            button->click();
            return;
        }
    }
    save();
}

} // namespace korvex::ui
