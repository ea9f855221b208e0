#include "ui/attachments/AttachmentChips.h"

#include "base/ByteSize.h"
#include "ui/attachments/AttachmentKind.h"
#include "ui/kit/theme/Direction.h"
#include "ui/kit/theme/IconSet.h"
#include "ui/kit/theme/Shapes.h"
#include "ui/kit/words/Text.h"

#include <QCoreApplication>
#include <QFontMetrics>

#include <algorithm>

namespace korvex::ui {

namespace {

/// How wide a chip is at most, in pixels at the standard font size.
constexpr int kWidest = 300;
/// A name that gets no more room than this is left alone in its chip.
constexpr int kNarrow = 90;
/// Some of a name is always seen.
constexpr int kLeastName = 20;
/// No more characters of a name than this are measured.
constexpr qsizetype kMeasured = 300;

bool isInvisible(QChar character) {
    return character.category() == QChar::Other_Control ||
           character.category() == QChar::Other_Format ||
           character == QChar(QChar::LineSeparator) ||
           character == QChar(QChar::ParagraphSeparator);
}

QString translated(const char* text) {
    return QCoreApplication::translate("korvex::ui::AttachmentChips", text);
}

QString damagedText() {
    return translated(
        QT_TRANSLATE_NOOP("korvex::ui::AttachmentChips", "Attachments could not be read"));
}

} // namespace

QString shownFilename(const std::string& filename) {
    auto name = toQString(filename);
    std::replace_if(name.begin(), name.end(), isInvisible, QChar(QChar::ReplacementCharacter));
    return name.size() <= kMeasured
               ? name
               : name.left(kMeasured / 2) + QStringLiteral("…") + name.right(kMeasured / 2);
}

QString accessibleTextOf(const services::AttachmentList& list) {
    if (list.isDamaged) {
        return damagedText();
    }
    QStringList names;
    for (const auto& each : list.attachments) {
        names.append(shownFilename(each.filename));
    }
    const auto count = static_cast<int>(names.size());
    return count == 0 ? QString()
                      : QCoreApplication::translate("korvex::ui::AttachmentChips",
                                                    "%n attachment(s): %1", nullptr, count)
                            .arg(names.join(translated(
                                QT_TRANSLATE_NOOP("korvex::ui::AttachmentChips", ", "))));
}

AttachmentChips::AttachmentChips(const services::AttachmentList& list, int width,
                                 const Theme& theme)
    : m_width(width) {
    if (list.isDamaged) {
        m_chips.push_back({.icon = QStringLiteral("warning-circle"), .name = damagedText()});
    }
    for (const auto& each : list.attachments) {
        m_chips.push_back({.id = each.id,
                           .icon = iconNameOf(attachmentKind(each.filename)),
                           .name = shownFilename(each.filename),
                           .size = toQString(base::sizeText(each.size))});
    }
    place(width, theme);
}

void AttachmentChips::place(int width, const Theme& theme) {
    const QFontMetrics metrics(theme.smallFont());
    const auto icon = theme.extent(Extent::smallIcon);
    const auto gap = theme.space(Space::small);
    const auto chipHeight = std::max(metrics.lineSpacing(), icon) + 2 * gap;
    const auto widest = std::min(width, theme.scaled(kWidest));
    int x = 0;
    int y = 0;
    for (auto& chip : m_chips) {
        const int plain = 2 * theme.space(Space::medium) + icon + gap;
        int around = plain + (chip.size.isEmpty() ? 0
                                                  : metrics.horizontalAdvance(chip.size) +
                                                        theme.space(Space::medium) + 1);
        const auto name = metrics.horizontalAdvance(chip.name);
        if (name > widest - around && widest - around < theme.scaled(kNarrow)) {
            // What a file is called says more than how large it is.
            chip.size.clear();
            around = plain;
        }
        chip.name = metrics.elidedText(chip.name, Qt::ElideMiddle,
                                       std::max(widest - around, theme.scaled(kLeastName)));
        const auto chipWidth = std::min(around + metrics.horizontalAdvance(chip.name) + 1, width);
        if (x > 0 && x + chipWidth > width) {
            x = 0;
            y += chipHeight + gap;
        }
        chip.rect = mirrored(QRect(x, y, chipWidth, chipHeight), width);
        x += chipWidth + theme.space(Space::medium);
    }
    m_height = m_chips.empty() ? 0 : y + chipHeight;
}

std::optional<base::Uuid> AttachmentChips::idOf(int index) const {
    return m_chips[static_cast<std::size_t>(index)].id;
}

int AttachmentChips::indexOf(const base::Uuid& id) const {
    const auto found = std::find_if(m_chips.begin(), m_chips.end(),
                                    [&](const Chip& chip) { return chip.id == id; });
    return found == m_chips.end() ? -1 : static_cast<int>(found - m_chips.begin());
}

int AttachmentChips::chipAt(const QPoint& point) const {
    const auto found = std::find_if(m_chips.begin(), m_chips.end(),
                                    [&](const Chip& chip) { return chip.rect.contains(point); });
    return found == m_chips.end() ? -1 : static_cast<int>(found - m_chips.begin());
}

void AttachmentChips::paint(QPainter& painter, const Theme& theme,
                            const AttachmentMarks& marks) const {
    for (int index = 0; index < count(); ++index) {
        paintChip(painter, theme, index, marks);
    }
}

void AttachmentChips::paintChip(QPainter& painter, const Theme& theme, int index,
                                const AttachmentMarks& marks) const {
    const auto& colors = theme.colors();
    const auto& chip = m_chips[static_cast<std::size_t>(index)];
    const auto isSelected = chip.id && chip.id == marks.selected;
    const auto isHovered = chip.id && chip.id == marks.hovered;
    const auto isMarked = isSelected && marks.isActive;
    const auto radius = theme.radius(Radius::small);
    Shapes::paintBox(painter, chip.rect, radius,
                     isMarked    ? colors.selection
                     : isHovered ? colors.tinted(colors.content, Tint::rest)
                                 : colors.content,
                     isSelected ? colors.accent : colors.hairline);
    if (isMarked) {
        Shapes::paintRing(painter, chip.rect, radius, colors.accent);
    }

    const auto side = theme.space(Space::medium);
    const auto whole = chip.rect.adjusted(side, 0, -side, 0);
    auto inside = whole;
    const auto icon = theme.extent(Extent::smallIcon);
    const auto quiet = chip.id ? colors.secondaryText : colors.danger;
    const QRect sign(inside.left(), inside.center().y() + 1 - icon / 2, icon, icon);
    IconSet::draw(painter, chip.icon, quiet, mirrored(sign, whole));
    inside.setLeft(inside.left() + icon + theme.space(Space::small));
    painter.setFont(theme.smallFont());
    if (!chip.size.isEmpty()) {
        painter.setPen(quiet);
        painter.drawText(mirrored(inside, whole), Qt::AlignRight | Qt::AlignVCenter,
                         isolated(chip.size));
        inside.setRight(inside.right() -
                        QFontMetrics(theme.smallFont()).horizontalAdvance(chip.size) - side);
    }
    painter.setPen(chip.id ? colors.text : colors.danger);
    painter.drawText(mirrored(inside, whole), Qt::AlignLeft | Qt::AlignVCenter,
                     isolated(chip.name));
}

} // namespace korvex::ui
