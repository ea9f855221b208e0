#include "ui/entries/EntryPasting.h"

#include "ui/kit/words/Text.h"
#include "ui/text/RichTextClipboard.h"
#include "ui/todos/PastedLines.h"

#include <QMimeData>

namespace korvex::ui {

namespace {

constexpr std::string_view kUndoName = "Paste";

/// Whether there is anything that a todo could not keep.
bool isFormatted(const richtext::AttributedString& text) {
    bool isFormatted = false;
    text.forEachRun([&](const auto& run) {
        const auto& attributes = run.attributes;
        isFormatted = isFormatted || attributes.font.isBold || attributes.font.isItalic ||
                      attributes.underline != richtext::LineStyle::none ||
                      attributes.strikethrough != richtext::LineStyle::none ||
                      !attributes.link.empty() || attributes.isCode();
    });
    text.forEachStyleRun([&](const auto& run) {
        isFormatted = isFormatted || !run.style.lists.empty() || !run.style.cells.empty();
    });
    return isFormatted;
}

} // namespace

void EntryPasting::paste(const QMimeData& offered) {
    const model::Entry* last = nullptr;
    if (!m_page.perform([&] { last = create(offered); }) || !last) {
        return;
    }
    if (const int row = m_model.rowOf(*last); row >= 0) {
        m_list.setCurrentRow(row);
    }
}

const model::Entry* EntryPasting::create(const QMimeData& offered) {
    const auto text = textFrom(offered);
    if (isFormatted(text)) {
        return &m_entries.createText({.rich = text,
                                      .board = *m_model.board(),
                                      .after = place(),
                                      .now = m_clock.now(),
                                      .undoName = kUndoName});
    }
    auto plain = toQString(text.text());
    plain.replace(QChar::LineSeparator, QLatin1Char('\n'));
    std::vector<std::string> contents;
    const auto lines = pastedLines(plain);
    for (const auto& line : lines) {
        contents.push_back(toUtf8(line));
    }
    if (contents.empty()) {
        return nullptr;
    }
    return m_entries
        .createTodos({.contents = std::move(contents),
                      .board = *m_model.board(),
                      .after = place(),
                      .now = m_clock.now(),
                      .undoName = kUndoName})
        .back();
}

std::optional<base::Uuid> EntryPasting::place() const {
    const int row = m_list.currentRow();
    const auto isEntry = row >= 0 && m_model.kind(row) == EntryRowKind::entry;
    const auto* const above = isEntry ? m_model.openEntryAbove(row + 1) : nullptr;
    return above ? std::optional(above->id()) : std::nullopt;
}

} // namespace korvex::ui
