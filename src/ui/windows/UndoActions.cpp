#include "ui/windows/UndoActions.h"

#include "ui/kit/pages/Page.h"
#include "ui/kit/words/Text.h"
#include "ui/windows/Navigation.h"

#include <QAction>
#include <QMenu>

namespace korvex::ui {

namespace {

/// "Undo Complete Todo".
QString withName(const QString& action, const std::string& name) {
    return name.empty() ? action : action + QLatin1Char(' ') + translated(name);
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
        run(*about, tr("“%1” was undone on %2."), [&] { m_manager.undo(step); });
    }
}

void UndoActions::redo() {
    const auto* const about = m_navigation.page().leave() ? m_manager.nextRedo() : nullptr;
    if (about) {
        run(*about, tr("“%1” was done again on %2."), [&] { m_manager.redo(); });
    }
}

void UndoActions::run(const services::UndoManager::About& about, const QString& done,
                      const std::function<void()>& step) {
    const auto entries = about.entries;
    const auto message = done.arg(translated(about.name));
    const auto before = subjectOf(entries);
    auto& page = m_navigation.page();
    if (!page.perform(step)) {
        page.takeKeyboard();
        return;
    }
    auto subject = subjectOf(entries);
    if (!subject.board && before.board && before.board->isLive()) {
        subject.board = before.board; // what was there is gone
    }
    show(subject, message);
}

UndoActions::Subject UndoActions::subjectOf(const std::vector<base::Uuid>& entries) const {
    for (const auto& id : entries) {
        if (auto* const entry = m_context.find<model::Entry>(id)) {
            return {entry, entry->board()};
        }
    }
    return {};
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
    const auto message = done.arg(toQString(subject.board->name()));
    if (m_navigation.currentPage() == PageKind::board) {
        m_navigation.openBoard(*subject.board);
        if (subject.entry) {
            m_navigation.page().showRecord(subject.entry->id());
        }
        m_navigation.page().tell(message);
    } else if (subject.entry) {
        // A page over all boards is not left for what it does not list.
        page.offer(message, tr("Show"), [this, id = subject.entry->id()] {
            if (auto* const entry = m_context.find<model::Entry>(id)) {
                m_navigation.showEntry(*entry);
            }
        });
    } else {
        page.tell(message);
    }
}

} // namespace korvex::ui
