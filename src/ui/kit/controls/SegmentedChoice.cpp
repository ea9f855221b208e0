#include "ui/kit/controls/SegmentedChoice.h"

#include "ui/kit/speech/Accessibility.h"
#include "ui/kit/theme/Shapes.h"

#include <QBoxLayout>
#include <QButtonGroup>
#include <QPainter>
#include <QRadioButton>

#include <algorithm>

namespace korvex::ui {

namespace {

class Segment final : public QRadioButton {
public:
    Segment(const QString& title, const Theme& theme, QWidget* parent)
        : QRadioButton(title, parent), m_theme(theme) {
        setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    }

    QSize sizeHint() const override {
        const auto words = fontMetrics().size(Qt::TextShowMnemonic, text());
        const auto edge = 2 * m_theme.space(Space::hair);
        return {words.width() + 2 * m_theme.space(Space::large),
                m_theme.extent(Extent::control) - edge};
    }
    /// Less room shortens the words.
    QSize minimumSizeHint() const override {
        return {2 * m_theme.space(Space::large), sizeHint().height()};
    }

protected:
    bool hitButton(const QPoint& place) const override { return rect().contains(place); }
    void paintEvent(QPaintEvent*) override {
        const auto& colors = m_theme.colors();
        const auto radius = m_theme.radius(Radius::small);
        QPainter painter(this);
        if (isChecked()) {
            Shapes::paintBox(painter, rect(), radius, colors.selection, colors.accent);
        } else if (isEnabled() && (underMouse() || isDown())) {
            Shapes::paintBox(painter, rect(), radius,
                             colors.tint(isDown() ? Tint::pressed : Tint::rest), QColor());
        }
        painter.setPen(palette().color(QPalette::WindowText));
        const auto room = width() - 2 * m_theme.space(Space::small);
        painter.drawText(
            rect(), Qt::AlignCenter | Qt::TextShowMnemonic,
            fontMetrics().elidedText(text(), Qt::ElideRight, room, Qt::TextShowMnemonic));
        Shapes::paintFocusRing(painter, *this);
    }

private:
    const Theme& m_theme;
};

/// Qt asks the layout of a widget that has one how high it is for a width, and not the widget.
class Line final : public QBoxLayout {
public:
    explicit Line(SegmentedChoice& choice)
        : QBoxLayout(QBoxLayout::LeftToRight, &choice), m_choice(choice) {}

    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override { return m_choice.heightForWidth(width); }

private:
    const SegmentedChoice& m_choice;
};

} // namespace

SegmentedChoice::SegmentedChoice(const QString& name, const QStringList& titles, const Theme& theme,
                                 QWidget* parent)
    : QWidget(parent), m_theme(theme), m_line(new Line(*this)), m_segments(new QButtonGroup(this)) {
    setAccessibleName(name);
    Accessibility::setRole(*this, QAccessible::Grouping);
    m_line->setSpacing(0);
    for (const auto& title : titles) {
        auto* const segment = new Segment(title, theme, this);
        m_segments->addButton(segment, static_cast<int>(m_segments->buttons().size()));
        segment->setFocusPolicy(Qt::ClickFocus);
        m_line->addWidget(segment);
    }
    QSizePolicy policy(QSizePolicy::Maximum, QSizePolicy::Preferred);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    connect(m_segments, &QButtonGroup::idToggled, this, [this](int index, bool isChosen) {
        // Qt makes the chosen one the only place in the tab order, but not before it had the
        // keyboard.
        m_segments->button(index)->setFocusPolicy(isChosen ? Qt::StrongFocus : Qt::ClickFocus);
        if (isChosen) {
            Q_EMIT chosenChanged(index);
        }
    });
    choose(0);
    connect(&theme, &Theme::changed, this, &SegmentedChoice::applyTheme);
    applyTheme();
}

int SegmentedChoice::chosen() const {
    return m_segments->checkedId();
}

void SegmentedChoice::choose(int index) {
    m_segments->button(index)->setChecked(true);
}

QSize SegmentedChoice::edges() const {
    const auto margins = m_line->contentsMargins();
    return {margins.left() + margins.right(), margins.top() + margins.bottom()};
}

QSize SegmentedChoice::sizeHint() const {
    QSize size;
    for (const auto* const segment : m_segments->buttons()) {
        const auto wanted = segment->sizeHint();
        size = {size.width() + wanted.width(), std::max(size.height(), wanted.height())};
    }
    return size + edges();
}

QSize SegmentedChoice::minimumSizeHint() const {
    QSize size;
    for (const auto* const segment : m_segments->buttons()) {
        size = size.expandedTo(segment->minimumSizeHint());
    }
    return size + edges();
}

int SegmentedChoice::heightForWidth(int width) const {
    const auto line = sizeHint();
    const auto further = static_cast<int>(m_segments->buttons().size()) - 1;
    return line.height() +
           (width < line.width() ? further * (line.height() - edges().height()) : 0);
}

void SegmentedChoice::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    m_line->setDirection(width() < sizeHint().width() ? QBoxLayout::TopToBottom
                                                      : QBoxLayout::LeftToRight);
}

void SegmentedChoice::paintEvent(QPaintEvent*) {
    const auto& colors = m_theme.colors();
    QPainter painter(this);
    Shapes::paintBox(painter, rect(), m_theme.radius(Radius::medium), colors.tint(Tint::rest),
                     Shapes::controlEdge(colors));
}

void SegmentedChoice::applyTheme() {
    const auto edge = m_theme.space(Space::hair);
    m_line->setContentsMargins(edge, edge, edge, edge);
    updateGeometry();
    update();
}

} // namespace korvex::ui
