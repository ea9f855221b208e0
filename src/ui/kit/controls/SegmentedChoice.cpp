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

/// Side by side where all have room for their words, else one below the other.
class SegmentLine final : public QBoxLayout {
public:
    explicit SegmentLine(QWidget* parent) : QBoxLayout(LeftToRight, parent) { setSpacing(0); }

    QSize sizeHint() const override {
        QSize size;
        for (int i = 0; i < count(); ++i) {
            const auto wanted = itemAt(i)->sizeHint();
            size = {size.width() + wanted.width(), std::max(size.height(), wanted.height())};
        }
        return size + edges();
    }
    QSize minimumSize() const override {
        QSize size;
        for (int i = 0; i < count(); ++i) {
            size = size.expandedTo(itemAt(i)->minimumSize());
        }
        return size + edges();
    }
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override {
        const auto segment = sizeHint().height() - edges().height();
        return edges().height() + (isBeside(width) ? 1 : count()) * segment;
    }
    int minimumHeightForWidth(int width) const override { return heightForWidth(width); }
    void setGeometry(const QRect& rect) override {
        setDirection(isBeside(rect.width()) ? LeftToRight : TopToBottom);
        QBoxLayout::setGeometry(rect);
    }

private:
    QSize edges() const {
        const auto margins = contentsMargins();
        return {margins.left() + margins.right(), margins.top() + margins.bottom()};
    }
    bool isBeside(int width) const { return width >= sizeHint().width(); }
};

} // namespace

SegmentedChoice::SegmentedChoice(const QString& name, const QStringList& titles, const Theme& theme,
                                 QWidget* parent)
    : QWidget(parent), m_theme(theme), m_segments(new QButtonGroup(this)) {
    setAccessibleName(name);
    Accessibility::setRole(*this, QAccessible::Grouping);
    auto* const line = new SegmentLine(this);
    for (const auto& title : titles) {
        auto* const segment = new Segment(title, theme, this);
        m_segments->addButton(segment, static_cast<int>(m_segments->buttons().size()));
        segment->setFocusPolicy(Qt::ClickFocus);
        line->addWidget(segment);
    }
    setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Preferred);
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

void SegmentedChoice::paintEvent(QPaintEvent*) {
    const auto& colors = m_theme.colors();
    QPainter painter(this);
    Shapes::paintBox(painter, rect(), m_theme.radius(Radius::medium), colors.tint(Tint::rest),
                     Shapes::controlEdge(colors));
}

void SegmentedChoice::applyTheme() {
    const auto edge = m_theme.space(Space::hair);
    layout()->setContentsMargins(edge, edge, edge, edge);
    update();
}

} // namespace korvex::ui
