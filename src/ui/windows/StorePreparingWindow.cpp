#include "ui/windows/StorePreparingWindow.h"

#include "ui/kit/speech/Accessibility.h"
#include "ui/kit/theme/IconSet.h"

#include <QCloseEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QShortcut>

namespace korvex::ui {

namespace {

/// In pixels at the standard font size.
constexpr int kIconSize = 48;

} // namespace

StorePreparingWindow::StorePreparingWindow(const QString& program, const Theme& theme)
    : m_what(addWords(tr("The store is being prepared"), theme.titleFont())) {
    setWindowTitle(program);
    setAttribute(Qt::WA_QuitOnClose, false);
    Accessibility::setRole(*this, QAccessible::Window);
    Accessibility::setRole(*m_what, QAccessible::AlertMessage);
    auto* const sign = new QLabel(this);
    const auto size = theme.scaled(kIconSize);
    sign->setPixmap(IconSet::program().pixmap(QSize(size, size), devicePixelRatioF()));
    auto* const words = new QVBoxLayout;
    words->setSpacing(theme.space(Space::small));
    words->addWidget(m_what);
    words->addWidget(addWords(tr("Korvex opens as soon as it is ready."), theme.font()));
    words->addWidget(addWords(
        tr("Nothing is lost if you close this window: the next start goes on."), theme.font()));
    auto* const line = new QHBoxLayout(this);
    const auto margin = theme.space(Space::vast);
    line->setContentsMargins(margin, margin, margin, margin);
    line->setSpacing(theme.space(Space::wide));
    line->addWidget(sign, 0, Qt::AlignTop);
    line->addLayout(words, 1);
    setFixedSize(sizeHint());
    connect(new QShortcut(Qt::CTRL | Qt::Key_Q, this), &QShortcut::activated, this,
            &QWidget::close);
}

QLabel* StorePreparingWindow::addWords(const QString& text, const QFont& font) {
    auto* const label = new QLabel(text, this);
    label->setFont(font);
    label->setTextFormat(Qt::PlainText);
    return label;
}

void StorePreparingWindow::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (!event->spontaneous()) {
        Accessibility::say(*m_what, m_what->text());
    }
}

void StorePreparingWindow::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape) {
        close();
    } else {
        QWidget::keyPressEvent(event);
    }
}

void StorePreparingWindow::closeEvent(QCloseEvent* event) {
    QWidget::closeEvent(event);
    Q_EMIT left();
}

} // namespace korvex::ui
