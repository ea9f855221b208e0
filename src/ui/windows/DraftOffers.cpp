#include "ui/windows/DraftOffers.h"

#include "ui/kit/words/Text.h"
#include "ui/windows/Navigation.h"

#include <utility>

namespace korvex::ui {

DraftOffers::DraftOffers(const Workspace& workspace, Navigation& navigation, BoardPage& boardPage,
                         QObject* parent)
    : QObject(parent), m_workspace(workspace), m_navigation(navigation), m_boardPage(boardPage) {
    connect(&boardPage, &BoardPage::editingEnded, this, &DraftOffers::offerRest);
    connect(&boardPage, &BoardPage::resumeRequested, this,
            [this](const app::Draft& draft, const BoardPage::Origin& origin) {
                // Until it is shown, it is kept as well as those of before; when not, it waits with
                // them.
                static_cast<void>(m_workspace.drafts.write(draft));
                m_waiting.push_front({draft, origin});
                showNext();
            });
}

void DraftOffers::start() {
    if (!m_workspace.context.container().allowsSave()) {
        return; // they wait until they can be stored
    }
    auto found = m_workspace.drafts.find();
    for (auto& each : found.drafts) {
        m_waiting.push_back(
            {std::move(each),
             {.onTheirBoard = tr("This was typed here before Korvex ended and could not be stored. "
                                 "Go on with it, or discard it."),
              .elsewhere = tr("This was typed before Korvex ended and could not be stored. Its "
                              "board is no longer there. Go on with it here, or discard it."),
              .archived = tr("This was typed before Korvex ended and could not be stored. Its "
                             "board is archived. Go on with it here, or discard it.")}});
    }
    m_unreadable = std::move(found.unreadable);
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
    m_boardPage.banner().say(
        {.text = tr("A draft of what was typed before cannot be read. It is kept at %1.")
                     .arg(places.join(QStringLiteral(", "))),
         .tone = ErrorBanner::Tone::notice});
}

void DraftOffers::showNext() {
    m_boardPage.banner().end(std::exchange(m_offer, 0));
    if (m_waiting.empty()) {
        return;
    }
    // What is edited until now ends with this, and asks what else waits.
    auto next = std::move(m_waiting.front());
    m_waiting.pop_front();
    auto* const board = boardOf(next.draft);
    if (board) {
        m_navigation.openBoard(*board);
    }
    if (!board || m_boardPage.board() != board ||
        !m_boardPage.resume(next.draft, whyOn(*board, next))) {
        // Where something else cannot be left, this one waits with the others.
        m_waiting.push_front(std::move(next));
        offerRest();
    }
}

void DraftOffers::offerRest() {
    if (m_waiting.empty()) {
        tellUnreadable();
    } else if (m_offer == 0) {
        m_offer = m_boardPage.banner().say({.text = tr("More was typed and not stored."),
                                            .tone = ErrorBanner::Tone::notice,
                                            .action = tr("Show"),
                                            .perform = [this] { showNext(); }});
    }
}

QString DraftOffers::whyOn(const model::Board& board, const Waiting& waiting) const {
    const auto& origin = waiting.origin;
    if (board.id() == waiting.draft.board) {
        return origin.onTheirBoard;
    }
    const auto isThere = m_workspace.boards.board(waiting.draft.board) != nullptr;
    return isThere && !origin.archived.isEmpty() ? origin.archived : origin.elsewhere;
}

model::Board* DraftOffers::boardOf(const app::Draft& draft) const {
    auto* const board = m_workspace.boards.board(draft.board);
    return board && !board->isArchived() ? board : m_workspace.boards.inboxBoard();
}

} // namespace korvex::ui
