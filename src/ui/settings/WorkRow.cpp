#include "ui/settings/WorkRow.h"

#include "ui/settings/SettingsRow.h"

#include <QAbstractButton>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

namespace korvex::ui {

namespace {

constexpr int kWhole = 1000;

QString wordsFor(storage::Stage stage) {
    switch (stage) {
    case storage::Stage::reading:
        return WorkRow::tr("Reading…");
    case storage::Stage::checking:
        return WorkRow::tr("Checking…");
    case storage::Stage::writing:
        return WorkRow::tr("Writing…");
    case storage::Stage::verifying:
        return WorkRow::tr("Reading back what was written…");
    case storage::Stage::replacing:
        return WorkRow::tr("Windows answer again in a moment.");
    }
    return {};
}

} // namespace

WorkRow::WorkRow(const Theme& theme, QWidget* parent)
    : QWidget(parent),
      m_bar(new QProgressBar),
      m_cancel(new QPushButton(tr("Cancel"))),
      m_row(new SettingsRow({}, m_cancel, theme, this)) {
    m_bar->setRange(0, kWhole);
    m_bar->setTextVisible(false);
    m_row->addBelow(m_bar);
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(m_row);
    connect(m_cancel, &QPushButton::clicked, this, &WorkRow::cancelled);
    hide();
}

void WorkRow::show(const QString& doing, const storage::Progress& progress) {
    const auto isForGood = progress.stage == storage::Stage::replacing;
    setVisible(true);
    m_row->setAnswer(doing);
    m_row->setNote(wordsFor(progress.stage));
    m_bar->setAccessibleName(doing);
    m_bar->setValue(static_cast<int>(progress.fraction * kWhole));
    if (isForGood && hasKeyboard()) {
        m_bar->setFocus();
    }
    m_cancel->setEnabled(!isForGood);
    if (isForGood) {
        repaint();
    }
}

void WorkRow::setFree(QWidget& control, bool isFree) {
    const auto losesKeyboard = !isFree && window()->focusWidget() == &control;
    if (losesKeyboard) {
        m_before = &control;
        if (isVisible()) {
            (m_cancel->isEnabled() ? static_cast<QWidget*>(m_cancel) : m_bar)->setFocus();
        }
    }
    control.setEnabled(isFree);
    if (losesKeyboard && !isVisible()) {
        giveKeyboard();
    }
    const auto isAwaited = isFree && m_before == &control && !isVisible();
    if (isAwaited && m_standIn && window()->focusWidget() == m_standIn) {
        control.setFocus();
        m_before = nullptr;
    }
}

void WorkRow::end() {
    if (hasKeyboard()) {
        giveKeyboard();
    }
    m_row->setAnswer({});
    hide();
}

void WorkRow::giveKeyboard() {
    const auto canTake = [](const QWidget* each) {
        return each->isVisible() && each->isEnabled() && each->focusPolicy() != Qt::NoFocus;
    };
    QWidget* next = m_before && canTake(m_before) ? m_before.data() : nullptr;
    // What it came from may be gone, or free only in a moment: what stands near is better than
    // the next of the window.
    const auto near = parentWidget()->findChildren<QAbstractButton*>();
    for (auto i = near.begin(); !next && i != near.end(); ++i) {
        next = !isAncestorOf(*i) && canTake(*i) ? *i : nullptr;
    }
    if (next) {
        next->setFocus();
    }
    m_standIn = next == m_before ? nullptr : next;
    m_before = m_standIn ? m_before : nullptr;
}

bool WorkRow::hasKeyboard() const {
    return isVisible() && window()->focusWidget() && isAncestorOf(window()->focusWidget());
}

} // namespace korvex::ui
