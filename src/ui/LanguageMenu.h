#pragma once

#include "base/Signal.h"
#include "richtext/CodeHighlighter.h"
#include "ui/Popover.h"

class QLineEdit;
class QListWidget;

namespace korvex::ui {

/// Chooses the language of code from a list that is searched by typing. Up and Down walk, Return
/// chooses, Escape gives up.
class LanguageMenu final : public Popover {
    Q_OBJECT

public:
    /// `current` is the identifier that is ticked. `code` must outlive the menu.
    LanguageMenu(richtext::CodeHighlighter& code, const QString& current, const Theme& theme,
                 QWidget* window);

    /// What a control shows for a language: its name where the highlighter has told it already.
    static QString titleOf(richtext::CodeHighlighter& code, const QString& id);

Q_SIGNALS:
    void chosen(const QString& id);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void fill();
    void choose();

    richtext::CodeHighlighter& m_code;
    QString m_current;
    QLineEdit* m_search;
    QListWidget* m_list;
    base::Subscription m_arrivals;
};

} // namespace korvex::ui
