#include "ui/text/RichTextClipboard.h"

#include "model/EntryContentLimit.h"
#include "richtext/rtf/RtfReader.h"
#include "richtext/rtf/RtfWriter.h"
#include "richtext/stored/CodeMetadata.h"
#include "richtext/stored/RichTextSerializer.h"
#include "ui/kit/words/Text.h"
#include "ui/text/TextHtml.h"

#include <algorithm>
#include <array>
#include <optional>
#include <span>

namespace korvex::ui {

namespace {

using namespace richtext;

/// Formats say a lot about little text, but nothing of this size is an entry.
constexpr qsizetype kMaximumRtfBytes = 4 * qsizetype{model::EntryContentLimit::kMaximumBytes};
/// Reading HTML takes much longer.
constexpr qsizetype kMaximumHtmlBytes = qsizetype{model::EntryContentLimit::kMaximumBytes};

constexpr std::array kRtfTypes{"text/rtf", "application/rtf", "text/richtext"};
constexpr const char* kHtmlType = "text/html";

QByteArray bytesOf(const QMimeData& data, const char* type) {
    return data.data(QLatin1String(type));
}

std::optional<AttributedString> textFromRtf(const QMimeData& data) {
    for (const auto* const type : kRtfTypes) {
        const auto bytes = bytesOf(data, type);
        if (bytes.size() > kMaximumRtfBytes || !bytes.startsWith("{\\rtf")) {
            continue;
        }
        try {
            const std::span rtf(reinterpret_cast<const std::uint8_t*>(bytes.constData()),
                                static_cast<std::size_t>(bytes.size()));
            return restoringMetadata(rtf, readRtf(rtf));
        } catch (const RtfError&) {
            continue; // not what it claims to be
        }
    }
    return std::nullopt;
}

std::optional<AttributedString> textFromHtml(const QMimeData& data) {
    if (!data.hasHtml() || bytesOf(data, kHtmlType).size() > kMaximumHtmlBytes) {
        return std::nullopt;
    }
    return textOfHtml(data.html());
}

} // namespace

bool hasText(const QMimeData& data) {
    return data.hasText() || data.hasHtml() ||
           std::any_of(kRtfTypes.begin(), kRtfTypes.end(),
                       [&](const char* type) { return data.hasFormat(QLatin1String(type)); });
}

AttributedString textFrom(const QMimeData& data) {
    auto text = textFromRtf(data);
    if (!text) {
        text = textFromHtml(data);
    }
    if (text) {
        text = RichTextSerializer::normalized(*text);
    }
    // Something was there and nothing of it can be kept, as with a picture from a page.
    return text && !text->isEmpty() ? *text : plainTextFrom(data);
}

AttributedString plainTextFrom(const QMimeData& data) {
    auto text = data.text();
    text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    text.replace(QLatin1Char('\r'), QLatin1Char('\n'));
    text.replace(QChar(QChar::ParagraphSeparator), QLatin1Char('\n'));
    return RichTextSerializer::plainRichText(toUtf8(text));
}

std::unique_ptr<QMimeData> mimeDataOf(const AttributedString& text) {
    auto data = std::make_unique<QMimeData>();
    auto plain = toQString(text.text());
    plain.replace(QChar(QChar::LineSeparator), QLatin1Char('\n'));
    data->setText(plain);
    data->setHtml(htmlOf(text));
    const auto rtf = storingMetadata(writeRtf(text), text);
    const QByteArray bytes(reinterpret_cast<const char*>(rtf.data()),
                           static_cast<qsizetype>(rtf.size()));
    for (const auto* const type : {kRtfTypes[0], kRtfTypes[1]}) {
        data->setData(QLatin1String(type), bytes);
    }
    return data;
}

} // namespace korvex::ui
