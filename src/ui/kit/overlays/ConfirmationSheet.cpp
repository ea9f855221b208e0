#include "ui/kit/overlays/ConfirmationSheet.h"

#include "ui/kit/controls/ButtonRow.h"
#include "ui/kit/theme/Danger.h"
#include "ui/kit/words/Text.h"

#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace korvex::ui {

ConfirmationSheet::ConfirmationSheet(const QString& message, const QString& action,
                                     const Theme& theme, QWidget* window)
    : Popover(theme, window) {
    setAccessibleName(message);
    setPanelWidth(theme.scaled(kSheetMeasure));
    auto* const text = new QLabel(breakable(message), this);
    text->setTextFormat(Qt::PlainText);
    text->setWordWrap(true);
    auto* const cancel = new QPushButton(tr("Cancel"), this);
    auto* const confirm = new QPushButton(action, this);
    markDangerous(*confirm);
    for (auto* const button : {cancel, confirm}) {
        // Return presses the button that has the keyboard, as everywhere in the window.
        button->setAutoDefault(true);
    }
    auto* const column = new QVBoxLayout(this);
    const auto margin = theme.space(Space::wide);
    column->setContentsMargins(margin, margin, margin, margin);
    column->setSpacing(margin);
    column->addWidget(text);
    column->addLayout(new ButtonRow({cancel, confirm}, theme.space(Space::medium)));
    setFocusProxy(cancel);
    connect(cancel, &QPushButton::clicked, this, &Popover::closeNow);
    connect(confirm, &QPushButton::clicked, this, [this] {
        closeNow();
        Q_EMIT confirmed();
    });
}

void ConfirmationSheet::ask() {
    openInMiddle();
    setFocus();
}

} // namespace korvex::ui
