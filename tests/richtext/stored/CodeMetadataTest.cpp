#include "richtext/stored/CodeMetadata.h"

#include "base/Base64.h"
#include "base/Digest.h"
#include "base/Utf16.h"

#include <gtest/gtest.h>

#include <random>

namespace korvex::tests {

namespace {

using namespace richtext;

// A document as far as the group cares: the braces count, not what is between them.
const base::Bytes kDocument{'{', '\\', 'r', 't', 'f', '1', '{', '}', 'x', '}', '\n'};

base::Bytes bytes(std::string_view text) {
    return {text.begin(), text.end()};
}

std::string string(const base::Bytes& bytes) {
    return {bytes.begin(), bytes.end()};
}

CharacterAttributes code(std::string language, bool isBlock) {
    return {.korvexCodeLanguage = std::move(language), .korvexCodeBlock = isBlock};
}

std::string fingerprintOf(const AttributedString& text) {
    return base::base64(base::sha256(base::utf8(text.text())));
}

base::Bytes documentWith(std::string_view json) {
    const auto group = base::base64(bytes(json));
    return bytes("{\\rtf1 x" + std::string(kCodeMetadataMarker) + group + "}}");
}

} // namespace

TEST(CodeMetadata, RunsComeBackExactly) {
    AttributedString text(u"plain ");
    text.append(u"one", code("swift", false), {});
    text.append(u"two", code("swift", true), {});
    text.append(u"\U0001F600\n", code("auto", true), {});
    text.append(u"plain\n", {}, {});
    auto bold = code("plaintext", false);
    text.append(u"half", bold, {});
    bold.font.isBold = true;
    text.append(u"bold", bold, {});
    AttributedString plain = text;
    plain.editAttributes({0, plain.length()}, [](CharacterAttributes& attributes) {
        attributes.korvexCodeLanguage.clear();
        attributes.korvexCodeBlock = false;
    });
    const auto stored = storingMetadata(kDocument, text);
    EXPECT_TRUE(restoringMetadata(stored, plain).isEquivalentTo(text));

    // The group is the last member of the document, and one run is one even where its font changes.
    const auto written = string(stored);
    EXPECT_TRUE(written.starts_with("{\\rtf1{}x{\\*\\korvexcode "));
    EXPECT_TRUE(written.ends_with("}}\n"));
    const auto start = written.find(kCodeMetadataMarker) + kCodeMetadataMarker.size();
    EXPECT_EQ(string(*base::bytesOfBase64(written.substr(start, written.size() - 3 - start))),
              R"({"fingerprint":")" + fingerprintOf(text) +
                  R"(","runs":[{"location":6,"length":3,"language":"swift","block":false},)"
                  R"({"location":9,"length":3,"language":"swift","block":true},)"
                  R"({"location":12,"length":3,"language":"auto","block":true},)"
                  R"({"location":21,"length":8,"language":"plaintext","block":false}]})");
}

TEST(CodeMetadata, WithoutCodeOrWithoutABraceNothingIsAdded) {
    EXPECT_EQ(storingMetadata(kDocument, AttributedString(u"plain")), kDocument);
    const AttributedString text(u"code", code("c", false));
    EXPECT_EQ(storingMetadata(bytes("no brace"), text), bytes("no brace"));
}

TEST(CodeMetadata, ASingleFaultDropsAllRunsAndKeepsTheText) {
    const AttributedString text(u"twenty units of text");
    const auto document = [&](std::string_view runs) {
        return R"({"fingerprint":")" + fingerprintOf(text) + R"(","runs":[)" + std::string(runs) +
               "]}";
    };
    const auto run = [](std::string_view location, std::string_view length,
                        std::string_view language = "c", std::string_view block = "true") {
        return R"({"location":)" + std::string(location) + R"(,"length":)" + std::string(length) +
               R"(,"language":")" + std::string(language) + R"(","block":)" + std::string(block) +
               "}";
    };
    const auto sound = run("0", "4") + "," + run("4", "6", "auto", "false");
    const auto isRestored = [&](const base::Bytes& rtf, const AttributedString& into) {
        const auto restored = restoringMetadata(rtf, into);
        EXPECT_EQ(restored.text(), into.text());
        return !restored.isEquivalentTo(into);
    };
    EXPECT_TRUE(isRestored(documentWith(document(sound)), text));
    EXPECT_TRUE(isRestored(documentWith(document(run("19", "1"))), text));
    for (const auto& runs : {
             run("2", "4") + "," + run("0", "1"),         // out of order
             run("0", "4") + "," + run("3", "2"),         // overlapping
             sound + "," + run("12", "0"),                // empty
             sound + "," + run("19", "2"),                // past the end
             sound + "," + run("20", "1"),                //
             sound + "," + run("21", "1"),                //
             run("1", "18446744073709551615"),            // and far past it
             run("18446744073709551615", "1"),            //
             run("-1", "4"),                              //
             sound + "," + run("12", "1", "klingon"),     // unknown
             sound + "," + run("12", "1", ""),            //
             run("0.5", "4"),                             // no numbers, texts and truths
             run("\"0\"", "4"),                           //
             run("0", "4", "c", "1"),                     //
             std::string(R"({"location":0,"length":4})"), //
             std::string("[]"),                           //
             std::string("null"),                         //
             sound + ",",                                 //
             std::string(400'000, '['),                   // deep enough to end a recursion
         }) {
        EXPECT_FALSE(isRestored(documentWith(document(runs)), text)) << runs.substr(0, 200);
    }
    for (const auto& json : {
             std::string(),
             std::string("[]"),
             std::string("{}"),
             R"({"runs":[)" + sound + "]}",
             R"({"fingerprint":"?","runs":[)" + sound + "]}",
             R"({"fingerprint":7,"runs":[)" + sound + "]}",
             R"({"fingerprint":")" + fingerprintOf(text) + R"("})",
             R"({"fingerprint":")" + fingerprintOf(text) + R"(","runs":{}})",
         }) {
        EXPECT_FALSE(isRestored(documentWith(json), text)) << json;
    }
    // Changed by a program that kept the group.
    EXPECT_FALSE(
        isRestored(documentWith(document(sound)), AttributedString(u"twenty units of texT")));
    // The base64, and the brace that ends it.
    auto damaged = string(documentWith(document(sound)));
    damaged.insert(damaged.find(kCodeMetadataMarker) + 20, " ");
    EXPECT_FALSE(isRestored(bytes(damaged), text));
    const auto whole = documentWith(document(sound));
    EXPECT_FALSE(isRestored({whole.begin(), whole.end() - 2}, text));
    // Only the first group counts.
    EXPECT_FALSE(isRestored(
        bytes("{" + std::string(kCodeMetadataMarker) + "}" + string(documentWith(document(sound)))),
        text));
}

TEST(CodeMetadata, RunsOverRunsAndParagraphsComeBackForAnyText) {
    for (unsigned seed = 1; seed <= 200; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        AttributedString plain;
        AttributedString text;
        for (std::size_t count = random() % 12; count > 0; --count) {
            const auto units = std::u16string(random() % 3, u'a') + (random() % 3 ? u"" : u"\n");
            CharacterAttributes attributes;
            attributes.font.isItalic = random() % 2 == 0;
            const ParagraphStyle style{.leftIndent = static_cast<Twips>(random() % 2)};
            plain.append(units, attributes, style);
            if (random() % 2 == 0) {
                attributes.korvexCodeLanguage = random() % 2 ? "c" : "auto";
                attributes.korvexCodeBlock = random() % 2 == 0;
            }
            text.append(units, attributes, style);
        }
        const auto restored = restoringMetadata(storingMetadata(kDocument, text), plain);
        ASSERT_TRUE(restored.isEquivalentTo(text));
    }
}

} // namespace korvex::tests
