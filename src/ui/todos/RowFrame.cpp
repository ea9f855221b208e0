#include "ui/todos/RowFrame.h"

#include <algorithm>

namespace korvex::ui {

namespace {

/// Of a text, in pixels at the standard font size.
constexpr int kLeastRoom = 40;

} // namespace

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
        .leastRoom = theme.scaled(kLeastRoom),
    };
}

RowFrame RowFrame::ofText(const Theme& theme) {
    auto frame = of(theme);
    frame.padding = theme.space(Space::medium);
    frame.textLeft = frame.side;
    return frame;
}

int RowFrame::room(int rowWidth) const {
    return std::max(leastRoom, rowWidth - textLeft - side);
}

int topOfSign(const QFontMetrics& words, int size) {
    return words.ascent() - (words.capHeight() + size) / 2;
}

RowLine::RowLine(const RowFrame& frame, int ascent, const Theme& theme) : m_words(theme.font()) {
    const auto usual = frame.top() + (frame.signSize + m_words.capHeight()) / 2;
    m_textTop = std::max(frame.boxTop, usual - m_words.ascent());
    m_baseline = m_textTop + ascent;
}

int RowLine::topOf(const QFont& font) const {
    return m_baseline - QFontMetrics(font).ascent();
}

int RowLine::topOfSign(int size) const {
    return m_baseline - m_words.ascent() + ui::topOfSign(m_words, size);
}

} // namespace korvex::ui
