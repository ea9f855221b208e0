#pragma once

#include "model/Board.h"
#include "ui/boards/BoardListing.h"
#include "ui/kit/theme/Theme.h"

#include <QWidget>

class QBoxLayout;
class QLabel;
class QLineEdit;
class QToolButton;

namespace korvex::ui {

class RefusalLabel;
class WordsAndButton;

/// The top of a board's page: icon, name, how many todos are open, and the menu. The name is typed
/// where it stands.
class BoardHeader final : public QWidget, public BoardListing {
    Q_OBJECT

public:
    explicit BoardHeader(const Theme& theme, QWidget* parent = nullptr);

    void show(const model::Board& board, int openTodoCount);
    /// Whether icon and name can be changed.
    void setChangeable(bool changeable);
    /// Of the board that is shown; an archived one is not renamed.
    void rename(model::Board& board, const QString& typed = {}) override;
    std::optional<QRect> placeOf(const model::Board& board) const override;
    /// Closes the name's field; what was typed there is taken, but for nothing at all.
    void leaveRenaming();
    /// Says beside the name why it was refused, until it is another or given up.
    void refuse(const QString& reason);

Q_SIGNALS:
    void iconRequested(const QRect& globalAnchor);
    /// The menu belongs to a control, or to a place, which has no size.
    void menuRequested(const QRect& globalAnchor);
    /// A name was typed; whoever listens stores it.
    void renamed(const QString& name);
    /// The name's field was closed while it had the keyboard.
    void renamingLeft();

protected:
    void contextMenuEvent(QContextMenuEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool canRename() const;
    /// Opens the field with the board's name, or with one that was refused, be it empty. Does
    /// nothing where the name cannot be changed.
    void startRenaming(const QString& typed = {});
    /// Closes the field and takes what was typed there.
    void takeName();
    /// Returns what was typed.
    QString closeField();
    bool takeKey(int key);
    void placeField();
    QRect anchorOf(const QWidget& control) const;
    void applyTheme();

    const Theme& m_theme;
    QBoxLayout* m_line;
    QToolButton* m_icon;
    QLabel* m_name;
    QLabel* m_count;
    WordsAndButton* m_words;
    RefusalLabel* m_refusal;
    QToolButton* m_menu;
    /// Null until the first name is typed.
    QLineEdit* m_field = nullptr;
    const model::Board* m_board = nullptr;
    bool m_isChangeable = true;
    bool m_isNarrow = false;
};

} // namespace korvex::ui
