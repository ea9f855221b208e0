#include "ui/entries/EntryPasting.h"

#include "ui/kit/words/Text.h"
#include "ui/text/RichTextClipboard.h"
#include "ui/todos/PastedLines.h"

#include <QMimeData>

namespace korvex::ui {

namespace {

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
    makeEntries(offered, current(), "Paste");
}

void EntryPasting::drop(const QMimeData& offered,
                        const std::optional<EntryReordering::Place>& place) {
    makeEntries(offered, place ? openPlace(m_model, *place) : OpenPlace{}, "Drop");
}

void EntryPasting::makeEntries(const QMimeData& offered, const OpenPlace& place,
                               std::string_view undoName) {
    const model::Entry* last = nullptr;
    if (!m_page.perform([&] { last = create(offered, place, undoName); }) || !last) {
        return;
    }
    // Who is typing somewhere goes on there.
    if (const int row = m_model.rowOf(*last); row >= 0 && m_list.editedRow() < 0) {
        m_list.setCurrentRow(row);
    }
}

const model::Entry* EntryPasting::create(const QMimeData& offered, const OpenPlace& place,
                                         std::string_view undoName) {
    const auto text = textFrom(offered);
    if (isFormatted(text)) {
        return &m_entries.createText({.rich = text,
                                      .board = *m_model.board(),
                                      .after = place.after,
                                      .before = place.before,
                                      .now = m_clock.now(),
                                      .undoName = undoName});
    }
    std::vector<std::string> contents;
    const auto lines = pastedLines(toQString(text.text()));
    for (const auto& line : lines) {
        contents.push_back(toUtf8(line));
    }
    if (contents.empty()) {
        return nullptr;
    }
    return m_entries
        .createTodos({.contents = std::move(contents),
                      .board = *m_model.board(),
                      .after = place.after,
                      .before = place.before,
                      .now = m_clock.now(),
                      .undoName = undoName})
        .back();
}

OpenPlace EntryPasting::current() const {
    const int row = m_list.currentRow();
    const auto isEntry = row >= 0 && m_model.kind(row) == EntryRowKind::entry;
    return isEntry ? openPlace(m_model, {row, model::EntryPlacement::after}) : OpenPlace{};
}

} // namespace korvex::ui
