#include "ui/kit/overlays/ConfirmationSheet.h"

#include "ui/kit/controls/ButtonRow.h"
#include "ui/kit/theme/Danger.h"
#include "ui/kit/theme/Shapes.h"
#include "ui/kit/words/Text.h"

#include <QEvent>
#include <QLabel>
#include <QPaintEvent>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>

namespace korvex::ui {

namespace {

/// How much of what it lies over is still seen.
constexpr float kSeen = 0.4F;

/// Quiets all of a window, which cannot be pressed under it, until the sheet over it closes.
class Veil final : public QWidget {
public:
    Veil(const Theme& theme, Popover& sheet) : QWidget(sheet.parentWidget()), m_theme(theme) {
        setEnabled(false);
        setAttribute(Qt::WA_NoMousePropagation);
        parentWidget()->installEventFilter(this);
        connect(&sheet, &Popover::closing, this, &QWidget::hide);
        connect(&sheet, &QObject::destroyed, this, &QObject::deleteLater);
        setGeometry(parentWidget()->rect());
        show();
        raise();
    }

protected:
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::Resize) {
            setGeometry(parentWidget()->rect());
        }
        return false;
    }
    void paintEvent(QPaintEvent* event) override {
        auto ground = m_theme.colors().content;
        ground.setAlphaF(1 - kSeen);
        QPainter(this).fillRect(event->rect(), ground);
    }

private:
    const Theme& m_theme;
};

} // namespace

ConfirmationSheet::ConfirmationSheet(const QString& message, const QString& action,
                                     const Theme& theme, QWidget* window)
    : Popover(theme, window),
      m_cancel(new QPushButton(tr("Cancel"), this)),
      m_confirm(new QPushButton(action, this)) {
    setAccessibleName(message);
    setPanelWidth(theme.scaled(kSheetMeasure));
    auto* const text = new QLabel(breakable(message), this);
    text->setTextFormat(Qt::PlainText);
    text->setWordWrap(true);
    markDangerous(*m_confirm);
    for (auto* const button : {m_cancel, m_confirm}) {
        // Return presses the button that has the keyboard, as everywhere in the window.
        button->setAutoDefault(true);
    }
    auto* const column = new QVBoxLayout(this);
    const auto margin = theme.space(Space::wide);
    column->setContentsMargins(margin, margin, margin, margin);
    column->setSpacing(margin);
    column->addWidget(text);
    column->addLayout(new ButtonRow({m_cancel, m_confirm}, theme.space(Space::medium)));
    setFocusProxy(m_cancel);
    connect(m_cancel, &QPushButton::clicked, this, [this] {
        closeNow();
        Q_EMIT declined();
    });
    connect(m_confirm, &QPushButton::clicked, this, [this] {
        closeNow();
        Q_EMIT confirmed();
    });
}

void ConfirmationSheet::offerInstead(const QString& otherwise) {
    m_cancel->setText(otherwise);
    markDangerous(*m_confirm, Danger::no);
    setFocusProxy(m_confirm);
}

void ConfirmationSheet::ask() {
    new Veil(theme(), *this);
    openInMiddle();
    setFocus();
}

/// An edge that is seen where rows are right beside it.
void ConfirmationSheet::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    Shapes::paintBox(painter, rect(), theme().radius(Radius::large), theme().colors().raised,
                     theme().colors().border);
}

} // namespace korvex::ui
