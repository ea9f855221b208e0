#include "ui/todos/LeavingRows.h"

#include <QStyle>
#include <QVariantAnimation>

namespace korvex::ui {

namespace {

constexpr int kLeavingMilliseconds = 160;

} // namespace

LeavingRows::LeavingRows(LazyListView& list, RowOf rowOf)
    : m_list(list), m_rowOf(std::move(rowOf)) {}

void LeavingRows::start(const model::Entry& entry, std::function<void()> done) {
    auto* const animation = new QVariantAnimation(this);
    const auto* const style = m_list.style();
    const auto moves = style->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, &m_list) > 0;
    animation->setDuration(moves ? kLeavingMilliseconds : 0);
    animation->setStartValue(1.0);
    animation->setEndValue(0.0);
    animation->setEasingCurve(QEasingCurve::InOutQuad);
    connect(animation, &QVariantAnimation::valueChanged, this,
            [this, &entry](const QVariant& value) {
                m_parts[&entry] = value.toDouble();
                measure(entry);
            });
    connect(animation, &QVariantAnimation::finished, this,
            [this, &entry, finish = std::move(done)] {
                m_parts.erase(&entry);
                finish();
                measure(entry); // where something has kept it in the list after all
            });
    animation->start(QAbstractAnimation::DeleteWhenStopped);
}

int LeavingRows::height(const model::Entry* entry, int fullHeight) const {
    const auto part = m_parts.find(entry);
    return part == m_parts.end() ? fullHeight : static_cast<int>(fullHeight * part->second);
}

void LeavingRows::measure(const model::Entry& entry) {
    if (const auto row = m_rowOf(entry); row >= 0) {
        m_list.measureAgain(row);
    }
}

} // namespace korvex::ui
