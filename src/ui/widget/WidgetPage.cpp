#include "ui/widget/WidgetPage.h"

#include "services/OpenTodos.h"
#include "services/SurvivingBoard.h"
#include "ui/kit/theme/Direction.h"
#include "ui/kit/words/Text.h"
#include "ui/todos/LeavingRows.h"
#include "ui/widget/WidgetTodoList.h"
#include "ui/widget/WidgetTodoModel.h"

#include <algorithm>

namespace korvex::ui {

WidgetPage::WidgetPage(std::optional<base::Uuid> board, const Parts& parts, const Theme& theme,
                       QWidget* parent)
    : Page(theme, parent),
      m_wanted(board),
      m_parts(parts),
      m_open(*parts.store.open()),
      m_model(new WidgetTodoModel(m_open.scheduleClock, parts.dates, this)),
      m_list(new WidgetTodoList(*m_model, theme)),
      m_ticks({.list = *this,
               .view = *m_list,
               .leaving = m_list->leaving(),
               .actions = *this,
               .runLoop = parts.runLoop}) {
    layOut({}, *m_list);
    m_list->setFocus(); // the keyboard begins there, and shows so once it is used
    connect(m_list, &WidgetTodoList::toggleRequested, this,
            [this](int row) { m_ticks.toggle(m_model->entry(row)); });
    connect(m_list, &WidgetTodoList::openRequested, this,
            [this](int row) { Q_EMIT entryOpenRequested(m_model->entry(row).id()); });
    m_changes = m_open.context.didChange().connect([this](const store::ChangeSet& changes) {
        m_list->entriesChanged({changes.updated.begin(), changes.updated.end()});
        refresh();
    });
    m_clockTicks =
        m_open.scheduleClock.didTick().connect([this](base::Instant) { m_list->forgetLabels(); });
    refresh();
}

WidgetPage::~WidgetPage() = default;

void WidgetPage::setBoard(std::optional<base::Uuid> board) {
    m_wanted = board;
    refresh();
    m_list->scrollToTop();
}

QString WidgetPage::title() const {
    return m_board ? toQString(m_board->name()) : QString();
}

void WidgetPage::takeKeyboard() {
    m_list->setFocus(Qt::TabFocusReason);
}

const model::Board* WidgetPage::boardThere() const {
    return m_wanted ? services::survivingBoard(m_open.boards, *m_wanted)
                    : m_open.boards.inboxBoard();
}

void WidgetPage::refresh() {
    follow([this] {
        m_board = boardThere();
        auto todos = m_board && !m_board->isArchived()
                         ? services::openTodos(m_open.context, *m_board)
                         : std::vector<model::Entry*>();
        m_openCount = static_cast<int>(todos.size());
        m_model->setTodos(std::move(todos));
    });
    showHint();
    Q_EMIT changed();
}

void WidgetPage::showHint() {
    if (!m_board) {
        setHint(tr("This board is not there any more."), tr("Choose another one in the menu."));
    } else if (m_board->isArchived()) {
        setHint(tr("“%1” is archived.").arg(isolated(toQString(m_board->name()))),
                tr("Restore it in Korvex, or choose another board in the menu."));
    } else if (m_model->rowCount() == 0) {
        setHint(tr("No open todos."));
    } else {
        setHint({});
    }
}

void WidgetPage::hold(model::Entry& entry) {
    m_model->hold(entry);
}

void WidgetPage::letGo(model::Entry& entry) {
    m_model->letGo(entry);
    refresh();
}

int WidgetPage::tickedRow(const model::Entry& entry) const {
    return m_model->rowOf(entry);
}

int WidgetPage::rowAfter(int row) const {
    return std::min(row, m_model->rowCount() - 1);
}

bool WidgetPage::complete(model::Entry& entry, std::optional<base::Instant>) {
    return perform([&] { m_parts.store.complete(entry); });
}

bool WidgetPage::restore(model::Entry& entry, std::optional<std::int64_t> position) {
    return perform([&] { m_parts.store.restore(entry, position); });
}

} // namespace korvex::ui
