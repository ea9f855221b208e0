#include "ui/kit/controls/SearchField.h"

#include "ui/kit/speech/Accessibility.h"
#include "ui/kit/theme/IconSet.h"
#include "ui/kit/theme/Shapes.h"

#include <QAction>
#include <QKeyEvent>
#include <QPainter>

namespace korvex::ui {

SearchField::SearchField(const Theme& theme, QWidget* parent)
    : QLineEdit(parent), m_theme(theme), m_icon(addAction(QIcon(), QLineEdit::LeadingPosition)) {
    setFrame(false);
    setPlaceholderText(tr("Search"));
    Accessibility::nameClearButton(*this, tr("Clear"));
    m_icon->setText(tr("Search")); // the name of its button
    setMaxLength(kMaximumLength);
    setMinimumWidth(0);
    connect(m_icon, &QAction::triggered, this, [this] { setFocus(); });
    connect(&theme, &Theme::changed, this, &SearchField::applyTheme);
    applyTheme();
}

void SearchField::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
        Q_EMIT walked(event->key());
        return;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        Q_EMIT openRequested();
        return;
    case Qt::Key_Escape:
        Q_EMIT escaped();
        return;
    default:
        QLineEdit::keyPressEvent(event);
    }
}

void SearchField::focusInEvent(QFocusEvent* event) {
    QLineEdit::focusInEvent(event);
    Q_EMIT focused();
}

void SearchField::paintEvent(QPaintEvent* event) {
    const auto& colors = m_theme.colors();
    QPainter painter(this);
    const auto radius = m_theme.radius(Radius::medium);
    Shapes::paintBox(painter, rect(), radius, hasFocus() ? colors.field : colors.tint(Tint::rest),
                     Shapes::controlEdge(colors));
    Shapes::paintFocusRing(painter, *this);
    painter.end();
    QLineEdit::paintEvent(event);
}

void SearchField::applyTheme() {
    const auto& colors = m_theme.colors();
    setFont(m_theme.font());
    auto own = palette();
    own.setColor(QPalette::Base, Qt::transparent);
    own.setColor(QPalette::Text, colors.text);
    own.setColor(QPalette::PlaceholderText, colors.secondaryText);
    setPalette(own);
    m_icon->setIcon(IconSet::icon(QStringLiteral("magnifying-glass"), colors.secondaryText));
    setFixedHeight(m_theme.extent(Extent::control));
    update();
}

} // namespace korvex::ui
