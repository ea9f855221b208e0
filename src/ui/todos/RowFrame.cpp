#include "ui/todos/RowFrame.h"

#include <QFontMetrics>

#include <algorithm>

namespace korvex::ui {

RowFrame RowFrame::of(const Theme& theme) {
    const auto side = theme.space(Space::wide);
    const auto gap = theme.space(Space::large);
    const auto sign = theme.extent(Extent::sign);
    return {
        .boxMargin = side - gap,
        .gap = gap,
        // A row of one line is as high as whatever stands in one line elsewhere.
        .padding = (theme.extent(Extent::control) - sign) / 2,
        .boxTop = theme.rowDistance() / 2,
        .rowDistance = theme.rowDistance(),
        .signSize = sign,
        .side = side,
        .textLeft = side + sign + gap,
        .scheduleSize = theme.extent(Extent::icon),
    };
}

RowFrame RowFrame::ofText(const Theme& theme) {
    auto frame = of(theme);
    frame.padding = theme.space(Space::medium);
    return frame;
}

RowLine::RowLine(const RowFrame& frame, int ascent, const Theme& theme) {
    const QFontMetrics metrics(theme.font());
    m_capital = metrics.capHeight();
    const auto usual = frame.top() + (frame.signSize + m_capital) / 2;
    m_textTop = std::max(frame.boxTop, usual - metrics.ascent());
    m_baseline = m_textTop + ascent;
}

int RowLine::topOf(const QFont& font) const {
    return m_baseline - QFontMetrics(font).ascent();
}

int RowLine::topOfSign(int size) const {
    return m_baseline - (m_capital + size) / 2;
}

} // namespace korvex::ui
