#include "ui/capture/CaptureForm.h"

#include "base/Text.h"
#include "model/EntryContentLimit.h"
#include "model/ServiceErrors.h"
#include "ui/boards/BoardColors.h"
#include "ui/boards/BoardIcons.h"
#include "ui/capture/ChoiceButton.h"
#include "ui/capture/FileChips.h"
#include "ui/kit/controls/FlowLayout.h"
#include "ui/kit/controls/RefusalLabel.h"
#include "ui/kit/controls/SegmentedChoice.h"
#include "ui/kit/controls/WordsAndButton.h"
#include "ui/kit/speech/Accessibility.h"
#include "ui/kit/theme/Direction.h"
#include "ui/kit/theme/IconSet.h"
#include "ui/kit/words/Refusal.h"
#include "ui/kit/words/Text.h"
#include "ui/todos/PastedLines.h"

#include <QAction>
#include <QActionGroup>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>
#include <string_view>
#include <vector>

namespace korvex::ui {

using model::EntryType;

namespace {

/// In the order of the choice.
constexpr int kTodo = 0;
constexpr int kText = 1;

/// Of what stands beside the button that saves, in pixels at the standard font size.
constexpr int kNarrowest = 180;

} // namespace

CaptureForm::CaptureForm(app::QuickEntryState& state, const Workspace& workspace,
                         const Theme& theme, QWidget* parent)
    : QWidget(parent),
      m_state(state),
      m_workspace(workspace),
      m_theme(theme),
      m_revision(state.draftRevision()) {
    makeControls();
    makeHeadings();
    layOut();
    m_text->setTyped(toQString(state.content()));
    applyTheme();
    connectControls();
    connect(&theme, &Theme::changed, this, &CaptureForm::applyTheme);
}

QWidget& CaptureForm::board() {
    return *m_board;
}

QWidget& CaptureForm::schedule() {
    return *m_schedule;
}

void CaptureForm::makeControls() {
    m_text = new CaptureText(m_theme, this);
    m_files = new FileChips(m_theme, this);
    m_reading = new QLabel(tr("Attaching files… Escape stops that."), this);
    m_reading->setForegroundRole(QPalette::PlaceholderText);
    Accessibility::setRole(*m_reading, QAccessible::AlertMessage);
    m_refusal = new RefusalLabel(m_theme, this);
    m_type = new SegmentedChoice(tr("Type"), {tr("Todo"), tr("Text")}, m_theme, this);
    m_type->setToolTip(tr("Todo (Ctrl+N), Text (Ctrl+Shift+T)"));
    m_board = new ChoiceButton(m_theme, this);
    m_board->setToolTip(tr("Board (Ctrl+K)"));
    m_schedule = new ChoiceButton(m_theme, this);
    m_heading = new ChoiceButton(m_theme, this);
    m_heading->setToolTip(tr("Heading (Ctrl+Alt+1 to 3, none: Ctrl+Alt+0)"));
    m_attach = makeTool(tr("Attach files"), tr("Ctrl+Shift+A"));
    m_discard = makeTool(tr("Discard the draft"), tr("Ctrl+Esc"));
    m_save = new QPushButton(tr("Save"), this);
    m_save->setDefault(true);
    m_save->setToolTip(tr("Save (Return)"));
}

QToolButton* CaptureForm::makeTool(const QString& title, const QString& keys) {
    auto* const tool = new QToolButton(this);
    tool->setAutoRaise(true);
    tool->setFocusPolicy(Qt::StrongFocus);
    tool->setAccessibleName(title);
    tool->setToolTip(tr("%1 (%2)").arg(title, keys));
    return tool;
}

void CaptureForm::makeHeadings() {
    auto* const menu = new QMenu(m_heading);
    auto* const group = new QActionGroup(menu);
    const auto add = [&](const QString& title, std::optional<richtext::HeadingLevel> level) {
        auto* const action = menu->addAction(title);
        action->setCheckable(true);
        action->setActionGroup(group);
        action->setShortcut(
            Qt::CTRL | Qt::ALT |
            static_cast<Qt::Key>(Qt::Key_0 + (level ? static_cast<int>(*level) : 0)));
        action->setShortcutContext(Qt::WindowShortcut);
        connect(action, &QAction::triggered, this, [this, level] {
            if (m_state.entryType() == EntryType::text) {
                m_state.forgetError();
                m_state.setHeading(level);
            }
        });
        addAction(action); // or its keys are heard while the menu is open only
        m_headings.emplace_back(action, level);
    };
    add(tr("Normal text"), std::nullopt);
    for (const auto level : richtext::kHeadingLevels) {
        add(translated(richtext::titleOf(level)), level);
    }
    m_heading->setMenu(menu);
}

void CaptureForm::layOut() {
    auto* const controls = new QWidget(this);
    m_controls = new FlowLayout(controls);
    m_controls->setContentsMargins(0, 0, 0, 0);
    for (auto* const each : std::initializer_list<QWidget*>{m_type, m_board, m_schedule, m_heading,
                                                            m_attach, m_discard}) {
        m_controls->addWidget(each);
    }
    m_foot = new WordsAndButton(*controls, *m_save);
    auto* const column = new QVBoxLayout(this);
    for (auto* const each :
         std::initializer_list<QWidget*>{m_text, m_files, m_reading, m_refusal}) {
        column->addWidget(each);
    }
    column->addLayout(m_foot);
    column->addStretch(1);
    setFocusProxy(m_text);
    const std::vector<QWidget*> stops{m_text,    m_files,  m_type,    m_board, m_schedule,
                                      m_heading, m_attach, m_discard, m_save};
    for (std::size_t i = 1; i < stops.size(); ++i) {
        setTabOrder(stops[i - 1], stops[i]);
    }
}

void CaptureForm::applyTheme() {
    m_text->applyTheme();
    m_files->applyTheme();
    m_reading->setFont(m_theme.smallFont());
    const auto size = m_theme.extent(Extent::sign);
    const auto side = m_theme.extent(Extent::control);
    for (const auto& [tool, icon] : {std::pair(m_attach, QStringLiteral("paperclip")),
                                     std::pair(m_discard, QStringLiteral("trash"))}) {
        tool->setIcon(IconSet::icon(icon, m_theme.colors().text));
        tool->setIconSize({size, size});
        tool->setFixedSize(side, side);
    }
    m_controls->setSpacing(m_theme.space(Space::medium));
    m_foot->setNarrowest(m_theme.scaled(kNarrowest));
    m_foot->setSpacing(m_theme.space(Space::medium));
    const auto margin = m_theme.space(Space::wide);
    const auto apart = m_theme.space(Space::large);
    layout()->setContentsMargins(margin, margin, margin, apart);
    layout()->setSpacing(apart);
    follow(); // icons have the colours of the look
}

void CaptureForm::connectControls() {
    connect(m_text, &QTextEdit::textChanged, this, [this] {
        const auto typed = toUtf8(m_text->typed());
        if (typed != m_state.content()) {
            say({});
            m_state.forgetError();
            m_state.setContent(typed);
        }
    });
    m_text->setTakes([this](const QString& text) { return takes(text); });
    connect(m_text, &CaptureText::saveRequested, this, &CaptureForm::saveRequested);
    connect(m_text, &CaptureText::attachmentsOffered, this, &CaptureForm::attachmentsOffered);
    connect(m_files, &FileChips::removalRequested, this, [this](const base::Uuid& file) {
        m_state.forgetError();
        m_state.removeAttachment(file);
        if (m_state.attachments().empty()) {
            m_text->setFocus();
        }
    });
    connect(m_type, &SegmentedChoice::chosenChanged, this, [this](int index) {
        const auto type = index == kTodo ? EntryType::todo : EntryType::text;
        if (type != m_state.entryType()) {
            m_state.forgetError();
            m_state.setEntryType(type);
        }
    });
    connect(m_board, &QPushButton::clicked, this, &CaptureForm::boardRequested);
    connect(m_schedule, &QPushButton::clicked, this, &CaptureForm::scheduleRequested);
    connect(m_attach, &QToolButton::clicked, this, &CaptureForm::filesRequested);
    connect(m_discard, &QToolButton::clicked, this, &CaptureForm::discardRequested);
    connect(m_save, &QPushButton::clicked, this, &CaptureForm::saveRequested);
}

void CaptureForm::follow() {
    const auto isTodo = m_state.entryType() == EntryType::todo;
    followText();
    m_type->choose(isTodo ? kTodo : kText);
    followBoard();
    m_schedule->setVisible(isTodo);
    m_heading->setVisible(!isTodo);
    followSchedule();
    followHeading();
    followFiles();
    const auto beginsToRead = m_state.isAttachingFiles() && m_reading->isHidden();
    m_reading->setVisible(m_state.isAttachingFiles());
    if (beginsToRead) {
        Accessibility::say(*m_reading, m_reading->text());
    }
    m_attach->setEnabled(m_state.attachments().size() < model::EntryAttachment::kMaximumCount);
    m_discard->setVisible(m_state.hasDraft());
    const auto& refused = m_state.errorMessage();
    m_refusal->say(refused ? translated(*refused) : m_problem);
}

void CaptureForm::followText() {
    const auto isTodo = m_state.entryType() == EntryType::todo;
    m_text->setAccessibleName(isTodo ? tr("Todos, one in each line") : tr("Text"));
    m_text->setHint(isTodo ? tr("What is to be done? Each line becomes a todo.\n"
                                "Shift+Return begins another one.")
                           : tr("What do you have in mind?\n"
                                "Shift+Return begins another line."));
    // What was typed into another draft is no longer to be taken back either.
    const auto isAnother = m_revision != m_state.draftRevision();
    m_revision = m_state.draftRevision();
    if (isAnother || toUtf8(m_text->typed()) != m_state.content()) {
        const QSignalBlocker quiet(m_text);
        m_text->setTyped(toQString(m_state.content()));
    }
}

bool CaptureForm::takes(const QString& text) {
    const auto bytes = toUtf8(withLineFeeds(text));
    const auto pieces = m_state.entryType() == EntryType::todo
                            ? base::filledLines(bytes)
                            : std::vector<std::string_view>{bytes};
    // Nobody writes a list of todos that is longer than the longest of texts.
    if (bytes.size() <= model::EntryContentLimit::kMaximumBytes &&
        std::all_of(pieces.begin(), pieces.end(), model::EntryContentLimit::allows)) {
        return true;
    }
    const model::EntryServiceError error(model::EntryServiceErrorCase::contentTooLong);
    say(translated(error.errorDescription()));
    return false;
}

void CaptureForm::followFiles() {
    m_files->show(m_state.attachments());
    QWidget* before = m_text;
    for (auto* const each : m_files->stops()) {
        setTabOrder(before, each);
        before = each;
    }
}

void CaptureForm::followBoard() {
    const auto& id = m_state.selectedBoardID();
    const model::Board* board = nullptr;
    if (id) { // who tells of changes hears no refusal, and a capture says what is wrong
        static_cast<void>(refusal([&] { board = m_workspace.context.find<model::Board>(*id); }));
    }
    const auto name = board ? toQString(board->name()) : tr("No board");
    const auto& colors = m_theme.colors();
    m_board->show(board ? boardIconName(board->iconSystemName()) : QString(),
                  board ? iconColorOf(*board, colors) : QColor(), name);
    m_board->setAccessibleName(tr("Board: %1").arg(isolated(name)));
}

void CaptureForm::followSchedule() {
    const auto& schedule = m_state.schedule();
    const auto quiet = m_theme.colors().secondaryText;
    if (schedule.isEmpty()) { // its texts cost a start what nobody reads
        m_schedule->show(QStringLiteral("calendar-plus"), quiet, tr("Schedule"));
        m_schedule->setAccessibleName(tr("Schedule"));
        m_schedule->setToolTip(tr("Schedule (Ctrl+D)"));
        return;
    }
    const auto& formats = m_workspace.dates.formats();
    const auto now = m_workspace.now();
    m_schedule->show(schedule.reminderDate ? QStringLiteral("bell-fill")
                                           : QStringLiteral("calendar-dots"),
                     quiet, toQString(schedule.dueLabel(now, formats).value_or("")));
    const auto spoken = toQString(schedule.accessibilityLabel(false, now, formats));
    m_schedule->setAccessibleName(tr("Schedule: %1").arg(spoken));
    m_schedule->setToolTip(spoken);
}

void CaptureForm::followHeading() {
    for (const auto& [action, level] : m_headings) {
        const auto isChosen = level == m_state.heading();
        action->setChecked(isChosen);
        if (isChosen) {
            m_heading->show({}, {}, action->text());
            m_heading->setAccessibleName(tr("Heading: %1").arg(action->text()));
        }
    }
}

void CaptureForm::say(const QString& problem) {
    if (m_problem != problem) {
        m_problem = problem;
        follow();
    }
}

} // namespace korvex::ui
