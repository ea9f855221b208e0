#include "ui/capture/FileChips.h"

#include "base/ByteSize.h"
#include "ui/attachments/AttachmentChips.h"
#include "ui/attachments/AttachmentKind.h"
#include "ui/kit/controls/FlowLayout.h"
#include "ui/kit/speech/Accessibility.h"
#include "ui/kit/theme/Direction.h"
#include "ui/kit/theme/IconSet.h"
#include "ui/kit/theme/Shapes.h"
#include "ui/kit/words/Text.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QToolButton>

#include <algorithm>

namespace korvex::ui {

namespace {

/// Of a name, in pixels at the standard font size: the most, and what is always seen.
constexpr int kWidestName = 200;
constexpr int kNarrowestName = 24;

class Chip final : public QWidget {
public:
    Chip(const Theme& theme, QWidget* parent) : QWidget(parent), m_theme(theme) {
        setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        const auto& colors = m_theme.colors();
        Shapes::paintBox(painter, rect(), m_theme.radius(Radius::small), colors.content,
                         colors.border);
    }

private:
    const Theme& m_theme;
};

/// As much of it as there is room for: its beginning, and what kind of file it is.
class Name final : public QLabel {
public:
    Name(const QString& name, const Theme& theme) : QLabel(name), m_theme(theme) {
        setTextFormat(Qt::PlainText);
        setFont(theme.smallFont());
    }

    QSize sizeHint() const override {
        const auto whole = QLabel::sizeHint();
        return {std::min(whole.width(), m_theme.scaled(kWidestName)), whole.height()};
    }
    QSize minimumSizeHint() const override {
        return sizeHint().boundedTo({m_theme.scaled(kNarrowestName), sizeHint().height()});
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setPen(palette().color(foregroundRole()));
        painter.drawText(rect(), static_cast<int>(lineStart()),
                         isolated(fontMetrics().elidedText(text(), Qt::ElideMiddle, width())));
    }

private:
    const Theme& m_theme;
};

} // namespace

FileChips::FileChips(const Theme& theme, QWidget* parent) : QWidget(parent), m_theme(theme) {
    auto* const flow = new FlowLayout(this);
    flow->setContentsMargins(0, 0, 0, 0);
    Accessibility::setRole(*this, QAccessible::List);
    setAccessibleName(tr("Attached files"));
    hide();
}

void FileChips::applyTheme() {
    layout()->setSpacing(m_theme.space(Space::small));
    m_shown.clear();
}

QWidget* FileChips::makeChip(const model::EntryAttachment& file) {
    const auto name = shownFilename(file.filename);
    const auto size = toQString(base::sizeText(file.data.size()));
    auto* const chip = new Chip(m_theme, this);
    Accessibility::setRole(*chip, QAccessible::ListItem);
    chip->setAccessibleName(tr("%1, %2").arg(isolated(name), size));
    chip->setToolTip(name);
    const auto icon = m_theme.extent(Extent::smallIcon);
    auto* const sign = new QLabel;
    sign->setPixmap(IconSet::pixmap(iconNameOf(attachmentKind(file.filename)),
                                    m_theme.colors().secondaryText, icon, devicePixelRatioF()));
    auto* const words = new Name(name, m_theme);
    auto* const bytes = new QLabel(size);
    bytes->setFont(m_theme.smallFont());
    bytes->setForegroundRole(QPalette::PlaceholderText);
    auto* const cross = new QToolButton;
    cross->setAutoRaise(true);
    cross->setFocusPolicy(Qt::StrongFocus);
    cross->setIcon(IconSet::icon(QStringLiteral("x"), m_theme.colors().text));
    cross->setIconSize({icon, icon});
    cross->setAccessibleName(tr("Remove %1").arg(isolated(name)));
    cross->setToolTip(tr("Remove"));
    connect(cross, &QToolButton::clicked, this,
            [this, id = file.id] { Q_EMIT removalRequested(id); });
    auto* const line = new QHBoxLayout(chip);
    const auto side = m_theme.space(Space::medium);
    const auto edge = m_theme.space(Space::hair);
    line->setContentsMargins(mirrored(QMargins(side, edge, edge, edge)));
    line->setSpacing(m_theme.space(Space::small));
    for (auto* const each : std::initializer_list<QWidget*>{sign, words, bytes, cross}) {
        line->addWidget(each, each == words ? 1 : 0);
    }
    m_crosses.push_back(cross);
    return chip;
}

void FileChips::show(const std::vector<model::EntryAttachment>& files) {
    std::vector<base::Uuid> ids;
    ids.reserve(files.size());
    for (const auto& each : files) {
        ids.push_back(each.id);
    }
    if (ids == m_shown) {
        return;
    }
    m_shown = std::move(ids);
    const auto focused = std::find_if(m_crosses.begin(), m_crosses.end(),
                                      [](const QToolButton* each) { return each->hasFocus(); });
    const auto place = focused - m_crosses.begin();
    const auto hadFocus = focused != m_crosses.end();
    m_crosses.clear();
    while (auto* const item = layout()->takeAt(0)) {
        item->widget()->hide();
        item->widget()->deleteLater(); // it may just have been pressed
        delete item;
    }
    for (const auto& each : files) {
        layout()->addWidget(makeChip(each));
    }
    setVisible(!files.empty());
    if (hadFocus && !m_crosses.empty()) {
        const auto last = static_cast<std::ptrdiff_t>(m_crosses.size()) - 1;
        m_crosses[static_cast<std::size_t>(std::min(place, last))]->setFocus();
    }
}

} // namespace korvex::ui
