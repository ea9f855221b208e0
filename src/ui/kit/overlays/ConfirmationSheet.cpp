#include "ui/kit/overlays/ConfirmationSheet.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

namespace korvex::ui {

namespace {

constexpr int kWidth = 380;
constexpr int kMargin = 16;

} // namespace

ConfirmationSheet::ConfirmationSheet(const QString& message, const QString& action,
                                     const Theme& theme, QWidget* window)
    : Popover(theme, window) {
    setAccessibleName(message);
    auto* const text = new QLabel(message, this);
    text->setTextFormat(Qt::PlainText);
    text->setWordWrap(true);
    auto* const cancel = new QPushButton(tr("Cancel"), this);
    auto* const confirm = new QPushButton(action, this);
    auto danger = confirm->palette();
    danger.setColor(QPalette::ButtonText, theme.colors().danger);
    confirm->setPalette(danger);
    for (auto* const button : {cancel, confirm}) {
        // Return presses the button that has the keyboard, as everywhere in the window.
        button->setAutoDefault(true);
    }
    auto* const buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(cancel);
    buttons->addWidget(confirm);
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
    column->setSpacing(14);
    column->addWidget(text);
    column->addLayout(buttons);
    setFixedWidth(std::min(theme.scaled(kWidth), window->width() - 2 * kMargin));
    setFocusProxy(cancel);
    connect(cancel, &QPushButton::clicked, this, &Popover::closeNow);
    connect(confirm, &QPushButton::clicked, this, [this] {
        closeNow();
        Q_EMIT confirmed();
    });
}

} // namespace korvex::ui
