#include "richtext/stored/CodeMetadata.h"

#include "base/Base64.h"
#include "base/Digest.h"
#include "base/Utf16.h"
#include "richtext/code/CodeSyntax.h"
#include "richtext/text/AttributedStringBuilder.h"

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

namespace korvex::richtext {

namespace {

constexpr std::size_t kMaximumGroup = 1'048'576;

constexpr const char* kFingerprint = "fingerprint";
constexpr const char* kRuns = "runs";
constexpr const char* kLocation = "location";
constexpr const char* kLength = "length";
constexpr const char* kLanguage = "language";
constexpr const char* kBlock = "block";

struct Run {
    TextRange range;
    std::string language;
    bool isBlock = false;
};

struct Metadata {
    base::Bytes fingerprint;
    std::vector<Run> runs;
};

base::Bytes fingerprintOf(const AttributedString& text) {
    const auto digest = base::sha256(base::utf8(text.text()));
    return {digest.begin(), digest.end()};
}

std::vector<Run> runsOf(const AttributedString& text) {
    std::vector<Run> runs;
    text.forEachRun([&](const AttributedString::CharacterRun& run) {
        const auto& attributes = run.attributes;
        if (!attributes.isCode()) {
            return;
        }
        const auto isContinued = !runs.empty() && runs.back().range.end() == run.range.location &&
                                 runs.back().language == attributes.korvexCodeLanguage &&
                                 runs.back().isBlock == attributes.korvexCodeBlock;
        if (isContinued) {
            runs.back().range.length += run.range.length;
        } else {
            runs.push_back({run.range, attributes.korvexCodeLanguage, attributes.korvexCodeBlock});
        }
    });
    return runs;
}

std::string jsonOf(const Metadata& metadata) {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    const auto put = [&](const std::string& string) {
        writer.String(string.data(), static_cast<rapidjson::SizeType>(string.size()));
    };
    writer.StartObject();
    writer.Key(kFingerprint);
    put(base::base64(metadata.fingerprint));
    writer.Key(kRuns);
    writer.StartArray();
    for (const auto& run : metadata.runs) {
        writer.StartObject();
        writer.Key(kLocation);
        writer.Uint64(run.range.location);
        writer.Key(kLength);
        writer.Uint64(run.range.length);
        writer.Key(kLanguage);
        put(run.language);
        writer.Key(kBlock);
        writer.Bool(run.isBlock);
        writer.EndObject();
    }
    writer.EndArray();
    writer.EndObject();
    return {buffer.GetString(), buffer.GetSize()};
}

const rapidjson::Value* memberOf(const rapidjson::Value& object, const char* name) {
    const auto member = object.FindMember(name);
    return member == object.MemberEnd() ? nullptr : &member->value;
}

std::optional<Run> runOf(const rapidjson::Value& value) {
    if (!value.IsObject()) {
        return std::nullopt;
    }
    const auto* const location = memberOf(value, kLocation);
    const auto* const length = memberOf(value, kLength);
    const auto* const language = memberOf(value, kLanguage);
    const auto* const block = memberOf(value, kBlock);
    if (!location || !location->IsUint64() || !length || !length->IsUint64() || !language ||
        !language->IsString() || !block || !block->IsBool()) {
        return std::nullopt;
    }
    return Run{{location->GetUint64(), length->GetUint64()},
               {language->GetString(), language->GetStringLength()},
               block->GetBool()};
}

std::optional<Metadata> metadataOf(const base::Bytes& json) {
    // Without recursion: brackets alone must not end the program.
    constexpr auto kFlags = rapidjson::kParseIterativeFlag | rapidjson::kParseValidateEncodingFlag;
    rapidjson::Document document;
    document.Parse<kFlags>(reinterpret_cast<const char*>(json.data()), json.size());
    if (document.HasParseError() || !document.IsObject()) {
        return std::nullopt;
    }
    const auto* const fingerprint = memberOf(document, kFingerprint);
    const auto* const runs = memberOf(document, kRuns);
    if (!fingerprint || !fingerprint->IsString() || !runs || !runs->IsArray()) {
        return std::nullopt;
    }
    auto digest = base::bytesOfBase64({fingerprint->GetString(), fingerprint->GetStringLength()});
    if (!digest) {
        return std::nullopt;
    }
    Metadata metadata{std::move(*digest), {}};
    for (const auto& value : runs->GetArray()) {
        auto run = runOf(value);
        if (!run) {
            return std::nullopt;
        }
        metadata.runs.push_back(std::move(*run));
    }
    return metadata;
}

std::optional<Metadata> metadataIn(std::span<const std::uint8_t> rtf) {
    const std::string_view bytes(reinterpret_cast<const char*>(rtf.data()), rtf.size());
    const auto marker = bytes.find(kCodeMetadataMarker);
    if (marker == std::string_view::npos) {
        return std::nullopt;
    }
    const auto start = marker + kCodeMetadataMarker.size();
    const auto end = bytes.find('}', start);
    if (end == std::string_view::npos || end - start > kMaximumGroup) {
        return std::nullopt;
    }
    const auto json = base::bytesOfBase64(bytes.substr(start, end - start));
    return json ? metadataOf(*json) : std::nullopt;
}

bool areSound(const std::vector<Run>& runs, std::size_t textLength) {
    std::size_t covered = 0;
    for (const auto& [range, language, isBlock] : runs) {
        if (range.location < covered || range.location > textLength || range.length < 1 ||
            range.length > textLength - range.location || !CodeSyntax::isKnownLanguage(language)) {
            return false;
        }
        covered = range.end();
    }
    return true;
}

AttributedString withRuns(const AttributedString& text, const std::vector<Run>& runs) {
    AttributedString::Builder builder;
    builder.reserve(text.length());
    const std::u16string_view units = text.text();
    auto code = runs.begin();
    const auto append = [&](const AttributedString::CharacterRun& run) {
        for (auto start = run.range.location; start < run.range.end();) {
            while (code != runs.end() && code->range.end() <= start) {
                ++code;
            }
            auto attributes = run.attributes;
            auto end = run.range.end();
            if (code != runs.end() && code->range.location <= start) {
                attributes.korvexCodeLanguage = code->language;
                attributes.korvexCodeBlock = attributes.korvexCodeBlock || code->isBlock;
                end = std::min(end, code->range.end());
            } else if (code != runs.end()) {
                end = std::min(end, code->range.location);
            }
            builder.append(units.substr(start, end - start), builder.idOf(attributes));
            start = end;
        }
    };
    text.forEachParagraph([&](const AttributedString::ParagraphRun& paragraph) {
        text.forEachRun(paragraph.range, append);
        builder.endParagraph(builder.idOf(paragraph.style));
    });
    return builder.take();
}

} // namespace

base::Bytes storingMetadata(base::Bytes rtf, const AttributedString& text) {
    auto runs = runsOf(text);
    if (runs.empty()) {
        return rtf;
    }
    const auto brace = std::find(rtf.rbegin(), rtf.rend(), std::uint8_t{'}'});
    if (brace == rtf.rend()) {
        return rtf;
    }
    const auto json = jsonOf({fingerprintOf(text), std::move(runs)});
    std::string group(kCodeMetadataMarker);
    group += base::base64({reinterpret_cast<const std::uint8_t*>(json.data()), json.size()});
    group += '}';
    rtf.insert(brace.base() - 1, group.begin(), group.end());
    return rtf;
}

AttributedString restoringMetadata(std::span<const std::uint8_t> rtf, AttributedString text) {
    const auto metadata = metadataIn(rtf);
    if (!metadata || metadata->fingerprint != fingerprintOf(text) ||
        !areSound(metadata->runs, text.length())) {
        return text;
    }
    return withRuns(text, metadata->runs);
}

} // namespace korvex::richtext
