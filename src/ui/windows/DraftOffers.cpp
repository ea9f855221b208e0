#include "ui/windows/DraftOffers.h"

#include "ui/entries/BoardPage.h"
#include "ui/kit/words/Text.h"
#include "ui/windows/Navigation.h"

#include <utility>

namespace korvex::ui {

DraftOffers::DraftOffers(const Workspace& workspace, Navigation& navigation, BoardPage& boardPage,
                         QObject* parent)
    : QObject(parent), m_workspace(workspace), m_navigation(navigation), m_boardPage(boardPage) {
    connect(&boardPage, &BoardPage::editingEnded, this, &DraftOffers::offerRest);
}

void DraftOffers::start() {
    if (!m_workspace.context.container().allowsSave()) {
        return; // they wait until they can be stored
    }
    const auto found = m_workspace.drafts.find();
    m_waiting.assign(found.drafts.begin(), found.drafts.end());
    m_unreadable = found.unreadable;
    if (m_waiting.empty()) {
        tellUnreadable();
    } else {
        showNext();
    }
}

void DraftOffers::tellUnreadable() {
    if (m_unreadable.empty()) {
        return;
    }
    QStringList places;
    for (const auto& each : std::exchange(m_unreadable, {})) {
        places.push_back(toQString(each.native()));
    }
    m_boardPage.banner().showMessage(
        tr("A draft of what was typed before cannot be read. It is kept at %1.")
            .arg(places.join(QStringLiteral(", "))),
        ErrorBanner::Tone::notice);
}

void DraftOffers::showNext() {
    const auto draft = m_waiting.front();
    auto* const board = boardOf(draft);
    if (!board) {
        return;
    }
    m_navigation.openBoard(*board);
    // Where something else cannot be left, this one waits with the others.
    if (m_boardPage.board() == board && m_boardPage.resume(draft)) {
        m_waiting.pop_front();
        m_isShown = true;
        const auto isInPlace = board->id() == draft.board;
        m_boardPage.banner().showMessage(
            isInPlace ? tr("This was typed here before Korvex ended and could not be stored. Go on "
                           "with it, or discard it.")
                      : tr("This was typed before Korvex ended and could not be stored. Its board "
                           "is no longer there. Go on with it here, or discard it."),
            ErrorBanner::Tone::notice);
    }
}

void DraftOffers::offerRest() {
    if (std::exchange(m_isShown, false)) {
        m_boardPage.banner().clear();
    }
    if (!m_waiting.empty()) {
        m_boardPage.banner().offer(tr("More was typed before Korvex ended and not stored."),
                                   tr("Show"), [this] { showNext(); });
    } else {
        tellUnreadable();
    }
}

model::Board* DraftOffers::boardOf(const app::Draft& draft) const {
    auto* const board = m_workspace.boards.board(draft.board);
    return board && !board->isArchived() ? board : m_workspace.boards.inboxBoard();
}

} // namespace korvex::ui
