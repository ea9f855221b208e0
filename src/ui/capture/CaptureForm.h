#pragma once

#include "app/QuickEntryState.h"
#include "ui/capture/CaptureText.h"
#include "ui/kit/theme/Theme.h"
#include "ui/workspace/Workspace.h"

#include <QWidget>

#include <vector>

class QAction;
class QLabel;
class QPushButton;
class QToolButton;

namespace korvex::ui {

class ChoiceButton;
class FileChips;
class FlowLayout;
class RefusalLabel;
class SegmentedChoice;
class WordsAndButton;

/// The content of the Quick Entry panel: shows the state, and changes it as the user does; what
/// opens something is for whoever listens. Another look leaves the keyboard where it is, and what
/// is being composed there. Main thread; all of it outlives the form.
class CaptureForm final : public QWidget {
    Q_OBJECT

public:
    CaptureForm(app::QuickEntryState& state, const Workspace& workspace, const Theme& theme,
                QWidget* parent);

    CaptureText& text() { return *m_text; }
    QWidget& board();
    QWidget& schedule();
    /// Shows the state as it is now.
    void follow();
    /// Tells the user that something failed, besides what the state tells; empty for nothing.
    void say(const QString& problem);

Q_SIGNALS:
    void saveRequested();
    void boardRequested();
    void scheduleRequested();
    void filesRequested();
    void discardRequested();
    /// Something to attach was pasted into the text or dropped on it.
    void attachmentsOffered(const QMimeData* offered);

private:
    void makeControls();
    QToolButton* makeTool(const QString& title, const QString& keys);
    void makeHeadings();
    void layOut();
    void connectControls();
    void applyTheme();
    void followText();
    /// Whether it could be stored; else the user is told.
    bool takes(const QString& text);
    void followFiles();
    void followBoard();
    void followSchedule();
    void followHeading();

    app::QuickEntryState& m_state;
    const Workspace& m_workspace;
    const Theme& m_theme;
    CaptureText* m_text;
    FileChips* m_files;
    QLabel* m_reading;
    RefusalLabel* m_refusal;
    SegmentedChoice* m_type;
    ChoiceButton* m_board;
    ChoiceButton* m_schedule;
    ChoiceButton* m_heading;
    std::vector<std::pair<QAction*, std::optional<richtext::HeadingLevel>>> m_headings;
    QToolButton* m_attach;
    QToolButton* m_discard;
    QPushButton* m_save;
    FlowLayout* m_controls;
    WordsAndButton* m_foot;
    QString m_problem;
    /// Of the draft that the text shows.
    base::Uuid m_revision;
};

} // namespace korvex::ui
