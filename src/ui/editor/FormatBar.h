#pragma once

#include "base/Signal.h"
#include "richtext/code/CodeHighlighter.h"
#include "ui/editor/FormatPanels.h"
#include "ui/editor/RichTextEdit.h"
#include "ui/editor/TableEditing.h"
#include "ui/kit/theme/Theme.h"

#include <QToolBar>

#include <optional>
#include <utility>
#include <vector>

class QToolButton;

namespace korvex::ui {

/// The controls of formatted text, a panel that floats beside its editor. They show what the text
/// at the caret looks like and leave keyboard and selection with the text: a click takes neither,
/// and a control that was reached by keyboard gives them back. F6 in the text goes to the first
/// control, Escape and F6 return. What does not fit goes into a menu at the end. Main thread; the
/// editor must outlive the bar.
class FormatBar final : public QToolBar {
    Q_OBJECT

public:
    explicit FormatBar(RichTextEdit& edit, richtext::CodeHighlighter& code, const Theme& theme,
                       QWidget* parent = nullptr);

Q_SIGNALS:
    /// Controls have come or gone: the bar needs another size.
    void sizeChanged();

protected:
    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    using IsOn = bool (*)(const FormatState&);
    struct Control {
        QAction* action;
        /// A control without an icon shows its text.
        QString icon;
        /// Null where nothing can be on.
        IsOn isOn;
    };

    QAction* add(const QString& icon, const QString& title, const QString& keys,
                 IsOn isOn = nullptr);
    void addCommand(richtext::RichTextAction::Kind kind, const QString& icon, const QString& title,
                    const QString& keys, IsOn isOn);
    void addHeadings();
    void addLists();
    void addTableControls();
    void addLanguage();
    void takeKeyboard();
    QToolButton* buttonOf(const QAction* action) const;
    QToolButton* moreButton() const;
    void prepareButtons();
    void perform(richtext::RichTextAction action);
    void showState();
    void showTableState();
    void applyTheme();
    /// The place, in global coordinates, of a panel that the control opens.
    QRect anchorOf(const QAction* action) const;
    QRect caretAnchor() const;

    RichTextEdit& m_edit;
    richtext::CodeHighlighter& m_code;
    const Theme& m_theme;
    TableEditing m_tables;
    QMenu* m_lists;
    std::vector<Control> m_controls;
    std::vector<std::pair<QAction*, TableAction>> m_tableActions;
    std::vector<std::pair<QAction*, std::optional<richtext::HeadingLevel>>> m_headings;
    QAction* m_heading = nullptr;
    QAction* m_table = nullptr;
    QAction* m_tableMenu = nullptr;
    QAction* m_language = nullptr;
    base::Subscription m_arrivals;
    FormatPanels m_panels;
};

} // namespace korvex::ui
