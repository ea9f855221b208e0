#include "ui/windows/StorePreparingWindow.h"

#include "ui/kit/speech/Accessibility.h"
#include "ui/kit/theme/IconSet.h"

#include <QCloseEvent>
#include <QHBoxLayout>
#include <QLabel>

namespace korvex::ui {

namespace {

/// In pixels at the standard font size.
constexpr int kIconSize = 48;

} // namespace

StorePreparingWindow::StorePreparingWindow(const Theme& theme) {
    setWindowTitle(QStringLiteral("Korvex"));
    setWindowFlags(Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                   Qt::WindowMinimizeButtonHint); // and no button that closes
    setAttribute(Qt::WA_QuitOnClose, false);
    Accessibility::setRole(*this, QAccessible::Window);
    auto* const sign = new QLabel(this);
    const auto size = theme.scaled(kIconSize);
    sign->setPixmap(IconSet::program().pixmap(QSize(size, size), devicePixelRatioF()));
    auto* const words = new QVBoxLayout;
    words->setSpacing(theme.space(Space::small));
    const auto add = [&](const QString& text, const QFont& font) {
        auto* const label = new QLabel(text, this);
        label->setFont(font);
        label->setTextFormat(Qt::PlainText);
        words->addWidget(label);
    };
    add(tr("The store is being prepared"), theme.titleFont());
    add(tr("Korvex opens as soon as it is ready."), theme.font());
    auto* const line = new QHBoxLayout(this);
    const auto margin = theme.space(Space::vast);
    line->setContentsMargins(margin, margin, margin, margin);
    line->setSpacing(theme.space(Space::wide));
    line->addWidget(sign, 0, Qt::AlignTop);
    line->addLayout(words, 1);
    setFixedSize(sizeHint());
}

void StorePreparingWindow::closeEvent(QCloseEvent* event) {
    event->ignore();
}

} // namespace korvex::ui
