#include "support/LargeBackup.h"

#include "base/Log.h"
#include "richtext/stored/RichTextSerializer.h"
#include "support/BenchStore.h"

#include <algorithm>

namespace korvex::bench {

namespace {

/// About 600 bytes when it is stored.
base::Bytes formattedText(const std::string& text) {
    base::StandardErrorLog log(base::LogLevel::error);
    richtext::AttributedString formatted;
    formatted.append(u"Bold words", {.font = {.isBold = true}}, {});
    formatted.append(u" and \u201Cquoted\u201D ones, a caf\u00E9, ", {}, {});
    formatted.append(u"a link", {.link = "https://example.org/a/path?with=query"}, {});
    formatted.append(richtext::RichTextSerializer::plainRichText(text));
    return richtext::RichTextSerializer(log).encode(formatted);
}

} // namespace

backup::BackupDocument largeBackup() {
    const auto board = base::Uuid::random();
    backup::BackupDocument document{.exportedAt = kNow, .appVersion = "0.1.0"};
    document.boards = {{.id = board, .name = "Notes", .createdAt = kNow, .isArchived = false}};
    const auto texts = bodies(kBackupEntries);
    document.entries.reserve(kBackupEntries);
    std::size_t contents = 0;
    for (std::size_t number = 0; number < kBackupEntries; ++number) {
        // Each so long that all come to what was meant.
        auto stored = formattedText(texts[number]);
        const auto room = (kBackupContents - contents) / (kBackupEntries - number);
        auto content = texts[number] + "\n\"" + texts[number] + "\"";
        content.resize(std::min(content.size(), room - std::min(room, stored.size())));
        content.shrink_to_fit();
        contents += stored.size() + content.size();
        document.entries.push_back({.id = base::Uuid::random(),
                                    .boardID = board,
                                    .type = "text",
                                    .content = std::move(content),
                                    .richTextData = std::move(stored),
                                    .createdAt = kNow + 0.123456 * static_cast<double>(number),
                                    .updatedAt = kNow + 1.7 * static_cast<double>(number),
                                    .sortOrder = static_cast<std::int64_t>(number)});
    }
    return document;
}

} // namespace korvex::bench
