#include "ui/gallery/ControlSamples.h"

#include "ui/gallery/ShownState.h"
#include "ui/kit/controls/FilterChoice.h"
#include "ui/kit/controls/ListChoice.h"
#include "ui/kit/controls/SearchField.h"
#include "ui/kit/controls/SegmentedChoice.h"
#include "ui/kit/controls/Switch.h"
#include "ui/kit/fields/DateField.h"
#include "ui/kit/fields/TimeField.h"
#include "ui/kit/theme/Danger.h"
#include "ui/kit/theme/IconSet.h"
#include "ui/kit/theme/Shapes.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPainter>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QToolButton>

#include <array>
#include <functional>
#include <vector>

namespace korvex::ui {

namespace {

/// Of a sample, in pixels at the standard font size.
constexpr int kWidest = 150;

struct Column {
    QString title;
    QStyle::State state;
    bool isEnabled = true;
};

struct Kind {
    QString title;
    std::function<QWidget*()> make;
};

QPushButton* button(const QString& text) {
    auto* const made = new QPushButton(text);
    made->setAutoDefault(false);
    return made;
}

QToolButton* tool(const Theme& theme, const QString& icon) {
    auto* const made = new QToolButton;
    made->setAutoRaise(true);
    const auto size = theme.extent(Extent::sign);
    made->setIconSize({size, size});
    if (!icon.isEmpty()) {
        made->setIcon(IconSet::icon(icon, theme.colors().text));
    }
    return made;
}

std::vector<Kind> buttons(const Theme& theme) {
    return {
        {QStringLiteral("Button"), [] { return button(QStringLiteral("Reset")); }},
        {QStringLiteral("Default"),
         [] {
             auto* const made = button(QStringLiteral("Save"));
             made->setDefault(true);
             return made;
         }},
        {QStringLiteral("Dangerous"),
         [] {
             auto* const made = button(QStringLiteral("Delete"));
             markDangerous(*made);
             return made;
         }},
        {QStringLiteral("Flat"),
         [] {
             auto* const made = button(QStringLiteral("Discard"));
             made->setFlat(true);
             return made;
         }},
        {QStringLiteral("Flat, default"),
         [] {
             auto* const made = button(QStringLiteral("Insert table"));
             made->setFlat(true);
             made->setDefault(true);
             return made;
         }},
        {QStringLiteral("Flat, dangerous"),
         [] {
             auto* const made = button(QStringLiteral("Delete…"));
             made->setFlat(true);
             markDangerous(*made);
             return made;
         }},
        {QStringLiteral("Tool"), [&theme] { return tool(theme, QStringLiteral("text-b")); }},
        {QStringLiteral("Tool, on"),
         [&theme] {
             auto* const made = tool(theme, QStringLiteral("text-italic"));
             made->setCheckable(true);
             made->setChecked(true);
             return made;
         }},
        {QStringLiteral("With a menu"),
         [&theme] {
             auto* const made = tool(theme, QStringLiteral("list-bullets"));
             made->setMenu(new QMenu(made));
             made->setPopupMode(QToolButton::InstantPopup);
             return made;
         }},
        {QStringLiteral("Words, menu"),
         [&theme] {
             auto* const made = tool(theme, {});
             made->setText(QStringLiteral("Heading 1"));
             made->setToolButtonStyle(Qt::ToolButtonTextOnly);
             made->setMenu(new QMenu(made));
             made->setPopupMode(QToolButton::InstantPopup);
             return made;
         }},
    };
}

QWidget* checkBox(Qt::CheckState state) {
    auto* const made = new QCheckBox(QStringLiteral("Reminder"));
    made->setTristate(state == Qt::PartiallyChecked);
    made->setCheckState(state);
    return made;
}

QWidget* radio(bool isOn) {
    auto* const made = new QRadioButton(QStringLiteral("Compact"));
    made->setAutoExclusive(false);
    made->setChecked(isOn);
    return made;
}

/// The circle of a todo; otherwise a row draws it.
class Circle final : public QWidget {
public:
    Circle(bool isCompleted, const Theme& theme) : m_isCompleted(isCompleted), m_theme(theme) {}

    QSize sizeHint() const override { return QSize(1, 1) * m_theme.extent(Extent::control); }

protected:
    void paintEvent(QPaintEvent*) override {
        using Shapes::CheckCircle;
        const auto size = m_theme.extent(Extent::sign);
        QPainter painter(this);
        painter.setOpacity(isEnabled() ? 1 : kDisabledOpacity);
        Shapes::paintCheckCircle(painter, QRect(0, (height() - size) / 2, size, size),
                                 m_isCompleted  ? CheckCircle::completed
                                 : underMouse() ? CheckCircle::openHovered
                                                : CheckCircle::open,
                                 m_theme.colors());
    }

private:
    bool m_isCompleted;
    const Theme& m_theme;
};

QWidget* filter(const Theme& theme, int chosen) {
    auto* const made = new FilterChoice(QStringLiteral("Filter by board"), theme, nullptr);
    made->addItems({QStringLiteral("All boards"), QStringLiteral("Inbox")});
    made->setCurrentIndex(chosen);
    return made;
}

QWidget* progress(int maximum) {
    auto* const made = new QProgressBar;
    made->setRange(0, maximum);
    made->setValue(maximum * 2 / 5);
    return made;
}

QWidget* onOff(const Theme& theme, bool isOn) {
    auto* const made = new Switch(QStringLiteral("Sounds"), theme);
    made->setChecked(isOn);
    return made;
}

std::vector<Kind> choices(const Theme& theme) {
    return {
        {QStringLiteral("Check box"), [] { return checkBox(Qt::Unchecked); }},
        {QStringLiteral("On"), [] { return checkBox(Qt::Checked); }},
        {QStringLiteral("In part"), [] { return checkBox(Qt::PartiallyChecked); }},
        {QStringLiteral("Radio button"), [] { return radio(false); }},
        {QStringLiteral("On"), [] { return radio(true); }},
        {QStringLiteral("Switch"), [&theme] { return onOff(theme, false); }},
        {QStringLiteral("On"), [&theme] { return onOff(theme, true); }},
        {QStringLiteral("Check circle"),
         [&theme]() -> QWidget* { return new Circle(false, theme); }},
        {QStringLiteral("Ticked"), [&theme]() -> QWidget* { return new Circle(true, theme); }},
        {QStringLiteral("One of few"),
         [&theme]() -> QWidget* {
             return new SegmentedChoice(
                 QStringLiteral("Sample"),
                 {QStringLiteral("Day"), QStringLiteral("Week"), QStringLiteral("Year")}, theme);
         }},
    };
}

std::vector<Kind> fields(const Theme& theme) {
    const auto formats =
        std::make_shared<const base::DateFormats>(std::string(), base::TimeZone::system());
    return {
        {QStringLiteral("Choice"),
         []() -> QWidget* {
             auto* const made = new ListChoice;
             made->addItems({QStringLiteral("All boards"), QStringLiteral("Inbox")});
             return made;
         }},
        {QStringLiteral("Field, empty"),
         []() -> QWidget* {
             auto* const made = new QLineEdit;
             made->setPlaceholderText(QStringLiteral("Search languages"));
             return made;
         }},
        {QStringLiteral("Field"),
         []() -> QWidget* { return new QLineEdit(QStringLiteral("Lisbon")); }},
        {QStringLiteral("Number"),
         []() -> QWidget* {
             auto* const made = new QSpinBox;
             made->setValue(3);
             return made;
         }},
        {QStringLiteral("Search"), [&theme]() -> QWidget* { return new SearchField(theme); }},
        {QStringLiteral("Filter"), [&theme] { return filter(theme, 0); }},
        {QStringLiteral("Filter, set"), [&theme] { return filter(theme, 1); }},
        {QStringLiteral("Day"),
         [&theme, formats]() -> QWidget* {
             return new DateField({.formats = formats, .today = [] { return QDate(2025, 3, 13); }},
                                  theme, nullptr);
         }},
        {QStringLiteral("Time"),
         [&theme, formats]() -> QWidget* { return new TimeField(formats, theme, nullptr); }},
        {QStringLiteral("Progress"), [] { return progress(100); }},
        {QStringLiteral("Under way"), [] { return progress(0); }},
    };
}

void show(QWidget& sample, QStyle::State state, const Theme& theme) {
    if (state == QStyle::State_None) {
        return;
    }
    if (qobject_cast<SegmentedChoice*>(&sample)) {
        // The chosen part is the one that has the keyboard; the pointer changes the others.
        const auto parts = sample.findChildren<QAbstractButton*>();
        show(state == QStyle::State_HasFocus ? *parts.front() : *parts.back(), state, theme);
        return;
    }
    sample.setStyle(new ShownState(theme, state, &sample));
    // What draws itself asks itself.
    sample.setAttribute(Qt::WA_UnderMouse, state.testFlag(QStyle::State_MouseOver));
    if (auto* const pressed = qobject_cast<QAbstractButton*>(&sample)) {
        pressed->setDown(state.testFlag(QStyle::State_Sunken));
    }
}

} // namespace

QWidget* makeControlSamples(const Theme& theme, QWidget* parent) {
    auto* const table = new QWidget(parent);
    auto* const grid = new QGridLayout(table);
    const std::array<Column, 5> columns{
        Column{.title = QStringLiteral("At rest"), .state = QStyle::State_None},
        Column{.title = QStringLiteral("Under the pointer"), .state = QStyle::State_MouseOver},
        Column{.title = QStringLiteral("Pressed"), .state = QStyle::State_Sunken},
        Column{.title = QStringLiteral("With the keyboard"), .state = QStyle::State_HasFocus},
        Column{
            .title = QStringLiteral("Disabled"), .state = QStyle::State_None, .isEnabled = false},
    };
    int row = 0;
    int column = 1;
    for (const auto& each : columns) {
        grid->addWidget(new QLabel(each.title, table), row, column++);
    }
    for (const auto& kinds : {buttons(theme), choices(theme), fields(theme)}) {
        for (const auto& kind : kinds) {
            grid->addWidget(new QLabel(kind.title, table), ++row, 0);
            column = 1;
            for (const auto& each : columns) {
                auto* const sample = kind.make();
                sample->setEnabled(each.isEnabled);
                show(*sample, each.state, theme);
                sample->setMaximumWidth(theme.scaled(kWidest));
                grid->addWidget(sample, row, column++, Qt::AlignVCenter);
            }
        }
    }
    return table;
}

} // namespace korvex::ui
