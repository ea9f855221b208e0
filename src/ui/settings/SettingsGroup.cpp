#include "ui/settings/SettingsGroup.h"

#include "ui/kit/theme/Shapes.h"

#include <QPainter>
#include <QVBoxLayout>

namespace korvex::ui {

SettingsGroup::SettingsGroup(const Theme& theme, QWidget* parent)
    : QWidget(parent), m_theme(theme), m_rows(new QVBoxLayout(this)) {
    m_rows->setContentsMargins(0, 0, 0, 0);
    m_rows->setSpacing(0);
    connect(&theme, &Theme::changed, this, qOverload<>(&QWidget::update));
}

SettingsRow& SettingsGroup::addRow(const QString& name, QWidget* control) {
    auto* const row = new SettingsRow(name, control, m_theme, this);
    add(row);
    return *row;
}

void SettingsGroup::add(QWidget* row) {
    m_rows->addWidget(row);
}

void SettingsGroup::clear() {
    while (auto* const item = m_rows->takeAt(0)) {
        // What has just been pressed may be in it.
        item->widget()->hide();
        item->widget()->deleteLater();
        delete item;
    }
}

void SettingsGroup::paintEvent(QPaintEvent*) {
    const auto& colors = m_theme.colors();
    QPainter painter(this);
    Shapes::paintPanel(painter, rect(), m_theme.radius(Radius::large), colors);
    const auto side = m_theme.space(Space::large);
    auto isFirst = true;
    for (int i = 0; i < m_rows->count(); ++i) {
        const auto& row = *m_rows->itemAt(i)->widget();
        if (row.isHidden()) {
            continue;
        }
        if (!isFirst) {
            painter.fillRect(QRect(side, row.y(), width() - 2 * side, 1), colors.hairline);
        }
        isFirst = false;
    }
}

} // namespace korvex::ui
