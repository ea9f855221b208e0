#include "ui/gallery/DesignSamples.h"

#include "ui/kit/theme/Direction.h"
#include "ui/kit/theme/Shapes.h"

#include <QPainter>

#include <array>
#include <utility>

namespace korvex::ui {

namespace {

constexpr int kColumns = 5;

struct NamedColor {
    const char* name;
    QColor ThemeColors::*color;
};

constexpr std::array kColors{
    NamedColor{"content", &ThemeColors::content},
    NamedColor{"sidebar", &ThemeColors::sidebar},
    NamedColor{"raised", &ThemeColors::raised},
    NamedColor{"field", &ThemeColors::field},
    NamedColor{"selection", &ThemeColors::selection},
    NamedColor{"text", &ThemeColors::text},
    NamedColor{"secondaryText", &ThemeColors::secondaryText},
    NamedColor{"accent", &ThemeColors::accent},
    NamedColor{"onAccent", &ThemeColors::onAccent},
    NamedColor{"danger", &ThemeColors::danger},
    NamedColor{"hairline", &ThemeColors::hairline},
    NamedColor{"border", &ThemeColors::border},
    NamedColor{"scrollHandle", &ThemeColors::scrollHandle},
};

} // namespace

DesignSamples::DesignSamples(const Theme& theme, QWidget* parent)
    : QWidget(parent), m_theme(theme) {}

QSize DesignSamples::sizeHint() const {
    return {m_theme.scaled(560), m_theme.scaled(520)};
}

void DesignSamples::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    auto top = paintColors(painter, 0);
    top = paintType(painter, top + m_theme.space(Space::wide));
    paintMeasures(painter, top + m_theme.space(Space::wide));
}

int DesignSamples::paintColors(QPainter& painter, int top) const {
    const auto& colors = m_theme.colors();
    const auto gap = m_theme.space(Space::medium);
    const auto cell = (width() + gap) / kColumns;
    const auto patch = m_theme.extent(Extent::control);
    const auto line = QFontMetrics(m_theme.smallFont()).height();
    painter.setFont(m_theme.smallFont());
    int count = 0;
    for (const auto& [name, member] : kColors) {
        const auto x = count % kColumns * cell;
        const auto y = top + count / kColumns * (patch + 2 * line + gap);
        const auto& color = colors.*member;
        Shapes::paintBox(painter, mirrored(QRect(x, y, cell - gap, patch), rect()),
                         m_theme.radius(Radius::medium), color, colors.hairline);
        painter.setPen(colors.text);
        painter.drawText(mirrored(QRect(x, y + patch, cell - gap, line), rect()),
                         static_cast<int>(lineStart()), QString::fromLatin1(name));
        painter.setPen(colors.secondaryText);
        painter.drawText(mirrored(QRect(x, y + patch + line, cell - gap, line), rect()),
                         static_cast<int>(lineStart()),
                         QStringLiteral("%1 : 1").arg(contrast(color, colors.content), 0, 'f', 1));
        ++count;
    }
    const auto rows = (static_cast<int>(kColors.size()) + kColumns - 1) / kColumns;
    return top + rows * (patch + 2 * line + gap);
}

int DesignSamples::paintType(QPainter& painter, int top) const {
    painter.setPen(m_theme.colors().text);
    for (const auto& [font, words] :
         {std::pair(m_theme.titleFont(), "Title: Trip to Lisbon"),
          std::pair(m_theme.sectionFont(), "Section: Tomorrow"),
          std::pair(m_theme.font(), "Body: We land on Friday, the ferry is booked"),
          std::pair(m_theme.smallFont(), "Label: Tomorrow, 09:00 to 10:00")}) {
        const auto line = QFontMetrics(font).height() + m_theme.space(Space::small);
        painter.setFont(font);
        painter.drawText(QRect(0, top, width(), line), static_cast<int>(lineStart()),
                         QString::fromLatin1(words));
        top += line;
    }
    return top;
}

int DesignSamples::paintMeasures(QPainter& painter, int top) const {
    const auto& colors = m_theme.colors();
    const auto size = m_theme.extent(Extent::control);
    const auto gap = m_theme.space(Space::wide);
    int x = 0;
    for (const auto space :
         {Space::hair, Space::small, Space::medium, Space::large, Space::wide, Space::vast}) {
        const auto length = m_theme.space(space);
        painter.fillRect(mirrored(QRect(x, top, length, size), rect()), colors.accent);
        x += length + gap;
    }
    for (const auto radius : {Radius::small, Radius::medium, Radius::large}) {
        Shapes::paintBox(painter, mirrored(QRect(x, top, 2 * size, size), rect()),
                         m_theme.radius(radius), colors.field, colors.border);
        x += 2 * size + gap;
    }
    return top + size;
}

} // namespace korvex::ui
