#include "ui/capture/QuickEntryPanel.h"

#include "model/EntryAttachment.h"
#include "model/ServiceErrors.h"
#include "ui/attachments/AttachmentClipboard.h"
#include "ui/boards/BoardPicker.h"
#include "ui/capture/CaptureForm.h"
#include "ui/kit/overlays/ConfirmationSheet.h"
#include "ui/kit/speech/Accessibility.h"
#include "ui/kit/words/Text.h"
#include "ui/text/OfferedFiles.h"
#include "ui/todos/SchedulePopover.h"
#include "ui/todos/TodoServices.h"
#include "ui/workspace/ProgramName.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDropEvent>
#include <QKeyEvent>
#include <QLayout>
#include <QMimeData>
#include <QPainter>
#include <QScreen>
#include <QShortcut>
#include <QStandardPaths>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>
#include <chrono>

namespace korvex::ui {

using model::EntryType;

namespace {

/// Key combinations that a desktop grabs take the keyboard away for a moment.
constexpr std::chrono::milliseconds kUntilLeft{250};

} // namespace

QuickEntryPanel::QuickEntryPanel(app::QuickEntryState& state, const Workspace& workspace,
                                 const Theme& theme)
    : QWidget(nullptr, Qt::Dialog | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint),
      m_state(state),
      m_workspace(workspace),
      m_theme(theme),
      m_room(*this, theme),
      m_look(workspace.threads, workspace.runLoop),
      m_folder(QStandardPaths::writableLocation(QStandardPaths::DownloadLocation)),
      m_revision(state.draftRevision()) {
    setWindowTitle(tr("Quick Entry – %1").arg(programName(workspace)));
    setAccessibleName(tr("Quick Entry"));
    Accessibility::setRole(*this, QAccessible::Window);
    setAcceptDrops(true);
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    makeForm();
    addShortcuts();
    m_leaving.setSingleShot(true);
    connect(&m_leaving, &QTimer::timeout, this, [this] {
        if (!isActiveWindow() && !asksSomething() && !m_state.hasDraft() &&
            !m_state.isAttachingFiles()) {
            putAway();
        }
    });
    m_subscriptions.push_back(state.didChange().connect([this] { follow(); }));
    m_subscriptions.push_back(
        workspace.context.didChange().connect([this](const store::ChangeSet&) {
            if (isVisible()) {
                m_form->follow(); // the board may have another name
            }
        }));
    m_subscriptions.push_back(workspace.scheduleClock.didTick().connect([this](base::Instant) {
        if (isVisible()) {
            m_form->follow();
        }
    }));
}

QuickEntryPanel::~QuickEntryPanel() = default;

void QuickEntryPanel::makeForm() {
    m_form = new CaptureForm(m_state, m_workspace, m_theme, this);
    layout()->addWidget(m_form);
    connect(m_form, &CaptureForm::saveRequested, this, &QuickEntryPanel::save);
    connect(m_form, &CaptureForm::boardRequested, this, &QuickEntryPanel::chooseBoard);
    connect(m_form, &CaptureForm::scheduleRequested, this, &QuickEntryPanel::editSchedule);
    connect(m_form, &CaptureForm::filesRequested, this, &QuickEntryPanel::chooseFiles);
    connect(m_form, &CaptureForm::discardRequested, this, &QuickEntryPanel::discard);
    connect(m_form, &CaptureForm::attachmentsOffered, this,
            [this](const QMimeData* offered) { attachOffered(*offered); });
    setFocusProxy(m_form);
}

template <typename Action>
void QuickEntryPanel::addShortcut(const QKeySequence& keys, Action&& action) {
    connect(new QShortcut(keys, this), &QShortcut::activated, this, [this, action] {
        if (Popover::dismissAll(*this)) {
            action();
        }
    });
}

/// The keys of the main window, where they mean the same.
void QuickEntryPanel::addShortcuts() {
    addShortcut(Qt::CTRL | Qt::Key_K, [this] { chooseBoard(); });
    addShortcut(Qt::CTRL | Qt::Key_D, [this] { editSchedule(); });
    addShortcut(Qt::CTRL | Qt::Key_N, [this] { setType(EntryType::todo); });
    addShortcut(Qt::CTRL | Qt::SHIFT | Qt::Key_T, [this] { setType(EntryType::text); });
    addShortcut(Qt::CTRL | Qt::SHIFT | Qt::Key_A, [this] { chooseFiles(); });
    addShortcut(Qt::CTRL | Qt::Key_Q, [this] { putAway(); });
    addShortcut(Qt::CTRL | Qt::Key_Escape, [this] { discard(); });
}

void QuickEntryPanel::open(const app::QuickEntryRequest& request) {
    m_wasTold = false;
    m_leaving.stop();
    if (!isVisible()) {
        m_state.prepare();
    }
    take(request);
    m_form->say({});
    m_form->follow();
    if (isVisible() && !isActiveWindow()) {
        hide(); // it comes to the screen and the desktop that the user looks at
    }
    if (!isVisible()) {
        const auto* const pointed = QGuiApplication::screenAt(QCursor::pos());
        const auto* const screen = pointed ? pointed : QGuiApplication::primaryScreen();
        placeOn(screen->availableGeometry());
        show();
    }
    raise();
    activateWindow();
    if (!m_room.isOpen()) {
        m_form->setFocus();
    }
}

void QuickEntryPanel::take(const app::QuickEntryRequest& request) {
    if (request.type) {
        m_state.setEntryType(*request.type);
    }
    if (request.board) {
        const auto before = m_state.selectedBoardID();
        m_state.setSelectedBoardID(request.board);
        m_state.resolveBoard();
        if (!m_state.selectedBoardID()) {
            m_state.setSelectedBoardID(before);
        }
    }
}

bool QuickEntryPanel::hasKeyboard() const {
    return isVisible() && (isActiveWindow() || m_leaving.isActive());
}

void QuickEntryPanel::putAway() {
    Popover::endAll(*this);
    if (m_state.isAttachingFiles()) {
        // What reads them may wait for a disk that never answers; the program may end with the
        // panel, and they would not be in the draft.
        m_state.cancelAttaching();
    } else if (const auto error = m_state.keepDraft(); error && !m_wasTold) {
        sayNotKept(error);
    } else {
        hideNow();
    }
}

bool QuickEntryPanel::mayEnd() {
    const auto error = m_state.keepDraft();
    const auto isKept = !error && !m_state.isAttachingFiles(); // those are in no draft yet
    if (isKept || (m_wasTold && isVisible())) {
        return true;
    }
    open({});
    if (error) { // else the panel says what it waits for, and how to end that
        sayNotKept(error);
    }
    return false;
}

void QuickEntryPanel::sayNotKept(std::error_code error) {
    m_wasTold = true;
    m_state.forgetError(); // it would be shown in the place of this
    m_form->say(tr("The draft could not be kept: %1. Escape puts the panel away all the same; what "
                   "is in it is lost when Korvex ends.")
                    .arg(QString::fromLocal8Bit(error.message().c_str())));
}

void QuickEntryPanel::hideNow() {
    if (isVisible()) {
        hide();
        m_state.forgetError(); // it was read; what fails from now on is said at the next opening
        Q_EMIT hidden();
    }
}

void QuickEntryPanel::discard() {
    const auto giveUp = [this] {
        m_state.reset();
        hideNow();
    };
    if (!m_state.hasDraft() && !m_state.isAttachingFiles()) {
        giveUp();
        return;
    }
    auto* const sheet = new ConfirmationSheet(
        tr("Discard what you have typed? It was not saved yet."), tr("Discard"), m_theme, this);
    connect(sheet, &ConfirmationSheet::confirmed, this, giveUp);
    m_room.makeFor(*sheet, nullptr);
    sheet->ask();
}

void QuickEntryPanel::follow() {
    if (m_revision != m_state.draftRevision()) {
        m_revision = m_state.draftRevision();
        for (auto* const open : findChildren<Popover*>()) {
            if (open->isVisible()) {
                open->closeNow(); // it is about another draft
            }
        }
    }
    m_form->follow();
}

void QuickEntryPanel::save() {
    if (!Popover::dismissAll(*this)) {
        return;
    }
    m_state.forgetError(); // the same reason is said again
    m_form->say({});
    if (m_state.save()) {
        hideNow();
    } else if (m_state.hasDraft() && !m_state.errorMessage()) { // as files without words
        m_form->say(translated(model::EntryServiceError(model::EntryServiceErrorCase::emptyContent)
                                   .errorDescription()));
    }
}

void QuickEntryPanel::setType(EntryType type) {
    m_state.forgetError();
    m_state.setEntryType(type);
}

bool QuickEntryPanel::closesPopoverOf(const QWidget& opener) {
    auto* const open = m_room.openedBy(opener);
    if (open) {
        open->dismiss();
    }
    return open != nullptr;
}

void QuickEntryPanel::chooseBoard() {
    if (closesPopoverOf(m_form->board())) {
        return;
    }
    auto* const picker = new BoardPicker({.title = tr("Save to board"), .boards = m_state.boards()},
                                         m_workspace.context, m_workspace.folding, m_theme, this);
    connect(picker, &BoardPicker::chosen, this, [this](model::Board* board) {
        m_state.forgetError();
        m_state.setSelectedBoardID(board->id());
    });
    m_room.makeFor(*picker, &m_form->board());
    picker->openUnder(m_form->board());
}

void QuickEntryPanel::editSchedule() {
    if (m_state.entryType() != EntryType::todo || closesPopoverOf(m_form->schedule())) {
        return;
    }
    const auto keep = [this](const model::TodoSchedule& schedule) {
        if (!schedule.isValid()) {
            throw model::EntryServiceError(model::EntryServiceErrorCase::invalidSchedule);
        }
        m_state.forgetError();
        m_state.setSchedule(schedule);
    };
    auto* const popover =
        new SchedulePopover(m_state.schedule(), keep, todoServices(m_workspace), m_theme, this);
    popover->setOpener(m_form->schedule());
    m_room.makeFor(*popover, &m_form->schedule());
    const auto& anchor = m_form->schedule();
    popover->openAt({anchor.mapToGlobal(QPoint()), anchor.size()});
    popover->setFocus();
}

void QuickEntryPanel::chooseFiles() {
    if (m_state.attachments().size() >= model::EntryAttachment::kMaximumCount) {
        // Before they are looked for; its button is off meanwhile.
        m_state.forgetError();
        m_form->say(translated(descriptionOf(model::AttachmentErrorCase::tooLarge)));
        return;
    }
    m_look.ask(
        {.title = tr("Attach files"), .kind = FileQuestion::Kind::filesToRead, .folder = m_folder},
        *this, [this](const std::vector<std::filesystem::path>& files) {
            m_folder = toFileName(files.front().parent_path());
            m_state.forgetError();
            m_state.attachFiles(files);
        });
}

void QuickEntryPanel::attachOffered(const QMimeData& offered) {
    m_state.forgetError();
    if (const auto files = offeredFiles(offered); !files.empty()) {
        m_state.attachFiles(files);
        return;
    }
    auto picture = offeredPicture(offered);
    if (!picture) {
        m_form->say(tr("The picture could not be read."));
        return;
    }
    services::AttachmentList list;
    for (const auto& each : m_state.attachments()) {
        list.attachments.push_back(
            {.id = each.id, .filename = each.filename, .size = each.data.size()});
    }
    std::vector<model::EntryAttachment> attachments;
    attachments.push_back({.id = base::Uuid::random(),
                           .filename = pastedImageName(list),
                           .data = *std::move(picture)});
    m_state.attach(std::move(attachments));
}

bool QuickEntryPanel::asksSomething() const {
    const auto windows = findChildren<QWidget*>();
    return std::any_of(windows.begin(), windows.end(), [](const QWidget* each) {
        const auto asks = each->isWindow() && each->windowType() != Qt::ToolTip;
        return each->isVisible() && (asks || qobject_cast<const Popover*>(each) != nullptr);
    });
}

bool QuickEntryPanel::event(QEvent* event) {
    const auto isDone = QWidget::event(event);
    switch (event->type()) {
    case QEvent::WindowDeactivate:
        m_leaving.start(kUntilLeft);
        break;
    case QEvent::WindowActivate:
        m_leaving.stop();
        tellIfReady();
        break;
    case QEvent::Hide:
        m_isPainted = false;
        break;
    default:
        break;
    }
    return isDone;
}

void QuickEntryPanel::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape && event->modifiers() == Qt::NoModifier) {
        if (!event->isAutoRepeat()) { // one that is held down has closed something in it
            putAway();
        }
    } else if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        // Return presses the button that has the keyboard; with Ctrl it saves as in the text.
        const auto savesAnywhere = event->modifiers().testFlag(Qt::ControlModifier);
        auto* const tool = qobject_cast<QToolButton*>(focusWidget());
        tool && !savesAnywhere ? tool->click() : save();
    } else {
        QWidget::keyPressEvent(event);
    }
}

/// As Escape, whoever closes it.
void QuickEntryPanel::closeEvent(QCloseEvent* event) {
    putAway();
    event->setAccepted(isHidden());
}

void QuickEntryPanel::tellIfReady() {
    if (m_isPainted && isActiveWindow()) {
        Q_EMIT ready();
    }
}

void QuickEntryPanel::paintEvent(QPaintEvent*) {
    if (!m_isPainted) {
        m_isPainted = true;
        QTimer::singleShot(0, this, &QuickEntryPanel::tellIfReady); // it is on the screen then
    }
    QPainter painter(this);
    painter.fillRect(rect(), m_theme.colors().content);
    painter.setPen(m_theme.colors().border);
    painter.drawRect(rect().adjusted(0, 0, -kLine, -kLine));
}

void QuickEntryPanel::dragEnterEvent(QDragEnterEvent* event) {
    if (isForAttaching(*event->mimeData())) {
        event->acceptProposedAction();
    }
}

void QuickEntryPanel::dropEvent(QDropEvent* event) {
    event->acceptProposedAction();
    attachOffered(*event->mimeData());
}

} // namespace korvex::ui
