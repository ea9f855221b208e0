#include "ui/windows/UndoActions.h"

#include "services/EntryOrder.h"
#include "ui/kit/pages/Page.h"
#include "ui/kit/words/Text.h"
#include "ui/windows/Navigation.h"

#include <QAction>
#include <QMenu>

#include <algorithm>

namespace korvex::ui {

namespace {

/// "Undo Complete Todo".
QString withName(const QString& action, const std::string& name) {
    return name.empty() ? action : action + QLatin1Char(' ') + translated(name);
}

/// The open entry of the board that this one stands behind, if there is one.
const model::Entry* entryAbove(const model::Board& board, const model::Entry& entry) {
    const auto open = services::activeEntries(board);
    const auto place = std::find(open.begin(), open.end(), &entry);
    return place == open.begin() || place == open.end() ? nullptr : *(place - 1);
}

} // namespace

UndoActions::UndoActions(store::ModelContext& context, services::UndoManager& manager,
                         Navigation& navigation, QWidget& window)
    : m_context(context),
      m_manager(manager),
      m_navigation(navigation),
      m_undo(makeAction(Qt::CTRL | Qt::Key_Z, window, qOverload<>(&UndoActions::undo))),
      m_redo(makeAction(Qt::CTRL | Qt::SHIFT | Qt::Key_Z, window, &UndoActions::redo)),
      m_changes(manager.didChange().connect([this] { update(); })) {
    update();
}

QAction* UndoActions::makeAction(const QKeySequence& keys, QWidget& window,
                                 void (UndoActions::*carryOut)()) {
    auto* const action = new QAction(this);
    action->setShortcut(keys);
    action->setShortcutVisibleInContextMenu(true);
    window.addAction(action);
    connect(action, &QAction::triggered, this, carryOut);
    return action;
}

void UndoActions::addTo(QMenu& menu) {
    menu.addActions({m_undo, m_redo});
}

void UndoActions::update() {
    m_undo->setText(withName(tr("Undo"), m_manager.undoActionName()));
    m_undo->setEnabled(m_manager.canUndo());
    m_redo->setText(withName(tr("Redo"), m_manager.redoActionName()));
    m_redo->setEnabled(m_manager.canRedo());
}

void UndoActions::undo() {
    // What is being edited is stored first, and is the latest change then.
    const auto* const about = m_navigation.page().leave() ? m_manager.nextUndo() : nullptr;
    if (about) {
        undo(about->id);
    }
}

void UndoActions::undo(services::UndoManager::StepId step) {
    if (!m_navigation.page().leave()) {
        return;
    }
    if (const auto* const about = m_manager.findUndo(step)) {
        run(*about, Way::back, [&] { m_manager.undo(step); });
    }
}

void UndoActions::redo() {
    const auto* const about = m_navigation.page().leave() ? m_manager.nextRedo() : nullptr;
    if (about) {
        run(*about, Way::forth, [&] { m_manager.redo(); });
    }
}

void UndoActions::run(const services::UndoManager::About& about, Way way,
                      const std::function<void()>& step) {
    const auto entries = about.entries;
    const auto name = translated(about.name);
    const auto before = subjectOf(entries, way);
    // Whoever created something and takes it back was at what it stands behind.
    const auto isInSight = before.board && m_navigation.isShown(*before.board);
    const auto* const above =
        isInSight && way == Way::back ? entryAbove(*before.board, *before.entry) : nullptr;
    if (!m_navigation.page().perform(step)) {
        m_navigation.page().takeKeyboard();
        return;
    }
    if (entries.empty()) {
        return; // such as words that come back into their editor, which is in sight by now
    }
    auto subject = subjectOf(entries, way);
    if (!subject.entry && before.board && before.board->isLive()) {
        subject = {above && above->isLive() ? above : nullptr, before.board};
    }
    const auto form =
        way == Way::back ? tr("“%1” was undone on %2.") : tr("“%1” was done again on %2.");
    show(subject, subject.board ? form.arg(name, toQString(subject.board->name())) : QString());
    if (const auto left = static_cast<int>(m_manager.leftOut()); left > 0) {
        const auto partly =
            way == Way::back
                ? tr("“%1” was undone, except for %Ln (entry|entries) deleted meanwhile.", nullptr,
                     left)
                : tr("“%1” was done again, except for %Ln (entry|entries) deleted meanwhile.",
                     nullptr, left);
        m_navigation.page().tell(partly.arg(name));
    }
}

/// Of several, what is seen first of what comes back, and of what is done again what was done last.
UndoActions::Subject UndoActions::subjectOf(const std::vector<base::Uuid>& entries, Way way) const {
    Subject found;
    for (const auto& id : entries) {
        auto* const entry = m_context.find<model::Entry>(id);
        if (entry && (!found.entry || way == Way::forth)) {
            found = {entry, entry->board()};
        }
    }
    return found;
}

void UndoActions::show(const Subject& subject, const QString& done) {
    auto& page = m_navigation.page();
    if (subject.entry && page.showRecord(subject.entry->id())) {
        return;
    }
    page.takeKeyboard();
    if (!subject.board || m_navigation.isShown(*subject.board)) {
        return;
    }
    if (m_navigation.currentPage() == PageKind::board) {
        m_navigation.openBoard(*subject.board);
        if (subject.entry) {
            m_navigation.page().showRecord(subject.entry->id());
        }
        m_navigation.page().tell(done);
    } else if (subject.entry) {
        // A page over all boards is not left for what it does not list.
        page.offer(done, tr("Show"), [this, id = subject.entry->id()] {
            if (auto* const entry = m_context.find<model::Entry>(id)) {
                m_navigation.showEntry(*entry);
            }
        });
    } else {
        page.tell(done);
    }
}

} // namespace korvex::ui
