#pragma once

#include "base/Signal.h"
#include "richtext/code/CodeHighlighter.h"
#include "ui/kit/overlays/ChoicePopover.h"

class QListWidget;

namespace korvex::ui {

/// Chooses the language of code.
class LanguageMenu final : public ChoicePopover {
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
    void fill() override;
    void choose() override;

private:
    richtext::CodeHighlighter& m_code;
    QString m_current;
    QListWidget* m_list;
    base::Subscription m_arrivals;
};

} // namespace korvex::ui
