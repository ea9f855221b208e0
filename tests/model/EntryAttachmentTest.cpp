#include "PlistBuilder.h"

#include "model/EntryAttachment.h"

#include <gtest/gtest.h>

#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <random>
#include <string>

namespace korvex::tests {

using model::AttachmentError;
using model::AttachmentErrorCase;
using model::EntryAttachment;

namespace {

using Attachments = std::vector<EntryAttachment>;

constexpr std::string_view kIdText = "E621E1F8-C36C-495A-93FC-0C247A3E6E5F";

EntryAttachment attachment(std::string filename, std::size_t size = 3) {
    return {.id = base::Uuid::random(), .filename = std::move(filename), .data = base::Bytes(size)};
}

template <typename Work>
std::optional<AttachmentErrorCase> refusal(Work&& work) {
    try {
        work();
    } catch (const AttachmentError& error) {
        return error.which();
    }
    return std::nullopt;
}

std::optional<AttachmentErrorCase> refusalOf(const base::Bytes& stored) {
    return refusal([&] { EntryAttachment::decode(std::span(stored)); });
}

/// One attachment "a" of the bytes 1, 2, 3, as any program might write it.
base::Bytes list(std::size_t referenceBytes, std::size_t offsetBytes) {
    PlistBuilder plist(referenceBytes, offsetBytes);
    plist.array({1});
    plist.dictionary({2, 4, 6}, {3, 5, 7});
    plist.string("id");
    plist.string(kIdText);
    plist.string("filename");
    plist.string("a");
    plist.string("data");
    plist.data({1, 2, 3});
    return plist.bytes();
}

/// The same with another object as its root, the others behind it.
template <typename Root>
base::Bytes listWith(Root&& root) {
    PlistBuilder plist;
    root(plist);
    return plist.bytes();
}

/// One attachment whose parts are written by `id`, `filename`, `data`.
template <typename Id, typename Filename, typename Data>
base::Bytes listOf(Id&& id, Filename&& filename, Data&& data) {
    PlistBuilder plist;
    plist.array({1});
    plist.dictionary({2, 3, 4}, {5, 6, 7});
    plist.string("id");
    plist.string("filename");
    plist.string("data");
    id(plist);
    filename(plist);
    data(plist);
    return plist.bytes();
}

const auto kGoodId = [](PlistBuilder& plist) { plist.string(kIdText); };
const auto kGoodName = [](PlistBuilder& plist) { plist.string("a"); };
const auto kGoodData = [](PlistBuilder& plist) { plist.data({1}); };

base::Bytes file(const char* name) {
    std::ifstream stream(std::filesystem::path(KORVEX_ATTACHMENT_CASES) / name, std::ios::binary);
    EXPECT_TRUE(stream) << name;
    return {std::istreambuf_iterator(stream), {}};
}

long peakKilobytes() {
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

std::string randomName(std::mt19937& random) {
    static const std::vector<std::string> kPieces{
        "a",  "Plan", " ", ".pdf", "é",   "世",  "👩🏽‍🚀", "e\u0301", "\xEF\xBF\xBF",
        "\n", "\"",   "-", "..",   "%2F", "\x7F"};
    std::string name;
    for (auto count = 1 + random() % 30; count > 0; --count) {
        name += kPieces[random() % kPieces.size()];
    }
    return EntryAttachment::isValidFilename(name) ? name : "name" + name;
}

} // namespace

TEST(EntryAttachment, ValidatesInTheOrderOfItsRules) {
    using enum AttachmentErrorCase;
    constexpr auto kFull = EntryAttachment::kMaximumBytes;
    const auto twin = attachment("a");
    struct Case {
        const char* what;
        Attachments attachments;
        std::optional<AttachmentErrorCase> refusal;
    };
    for (const auto& each : {
             Case{"none", {}, std::nullopt},
             Case{"three full ones",
                  {attachment("a", kFull), attachment("b", kFull), attachment("c", kFull)},
                  std::nullopt},
             Case{"one byte more", {attachment("a", kFull + 1)}, tooLarge},
             Case{"four",
                  {attachment("a"), attachment("b"), attachment("c"), attachment("d")},
                  tooLarge},
             Case{"four, two the same", {twin, twin, attachment("a"), attachment("b")}, tooLarge},
             Case{"two the same, badly named", {twin, twin, attachment("")}, invalidData},
             Case{"badly named after too large",
                  {attachment("a", kFull + 1), attachment(":")},
                  invalidFile},
             Case{"like names", {attachment("a"), attachment("a")}, std::nullopt},
         }) {
        EXPECT_EQ(refusal([&] { EntryAttachment::validate(each.attachments); }), each.refusal)
            << each.what;
    }
}

TEST(EntryAttachment, NamesAreThoseOfOneFile) {
    for (const std::string name : {"a", "...", ".profile", "a b.txt", "世界.png", "-rf", "a\nb"}) {
        EXPECT_TRUE(EntryAttachment::isValidFilename(name)) << name;
    }
    for (const std::string& name :
         {std::string(), std::string("."), std::string(".."), std::string("a/b"), std::string("/"),
          std::string("a\\b"), std::string("a:b"), std::string("a\0b", 3), std::string("\xFF"),
          std::string("\xED\xA0\x80"), std::string(1025, 'x')}) {
        EXPECT_FALSE(EntryAttachment::isValidFilename(name)) << name;
    }
}

TEST(EntryAttachment, AnyValidListComesBackAsItWasStored) {
    std::mt19937 random(20'250'310);
    for (int round = 0; round < 300; ++round) {
        Attachments attachments;
        for (auto count = 1 + random() % EntryAttachment::kMaximumCount; count > 0; --count) {
            auto added = attachment(randomName(random), random() % 70'000);
            // Some hold the same bytes.
            if (random() % 4 != 0) {
                std::generate(added.data.begin(), added.data.end(), std::ref(random));
            }
            attachments.push_back(std::move(added));
        }
        const auto stored = EntryAttachment::encode(attachments);
        ASSERT_TRUE(stored);
        ASSERT_EQ(EntryAttachment::decode(stored), attachments);
    }
    EXPECT_EQ(EntryAttachment::encode({}), std::nullopt);
    EXPECT_TRUE(EntryAttachment::decode(std::optional<base::Bytes>()).empty());
    EXPECT_TRUE(EntryAttachment::decode(base::Bytes()).empty());
}

TEST(EntryAttachment, ThreeFullFilesAreStoredAndRead) {
    Attachments attachments;
    for (std::uint8_t i = 0; i < 3; ++i) {
        attachments.push_back(attachment(std::string(1024, 'n'), EntryAttachment::kMaximumBytes));
        attachments.back().data[i] = 1;
    }
    const auto stored = EntryAttachment::encode(attachments);
    ASSERT_TRUE(stored);
    EXPECT_LT(stored->size(), EntryAttachment::kMaximumTotalBytes + 16 * 1024);
    EXPECT_EQ(EntryAttachment::decode(stored), attachments);
    attachments.push_back(attachment("one more", 0));
    EXPECT_EQ(refusal([&] { EntryAttachment::encode(attachments); }),
              AttachmentErrorCase::tooLarge);
}

TEST(EntryAttachment, ReadsWhatOtherProgramsStore) {
    const Attachments expected{
        {.id = *base::Uuid::parse(kIdText), .filename = "a", .data = {1, 2, 3}}};
    for (const std::size_t referenceBytes : {1, 2, 3, 4, 8}) {
        for (const std::size_t offsetBytes : {1, 2, 3, 4, 8}) {
            EXPECT_EQ(EntryAttachment::decode(list(referenceBytes, offsetBytes)), expected)
                << referenceBytes << ' ' << offsetBytes;
        }
    }
    // Members of other kinds, an identifier in small letters, text in two bytes a letter.
    PlistBuilder plist;
    plist.array({1});
    plist.dictionary({2, 3, 4, 5}, {6, 0, 7, 8});
    plist.string(u"id");
    plist.string("note");
    plist.string("data");
    plist.string(u"filename");
    plist.string("e621e1f8-c36c-495a-93fc-0c247a3e6e5f");
    plist.data({1, 2, 3});
    plist.string(u"a");
    EXPECT_EQ(EntryAttachment::decode(plist.bytes()), expected);

    // As another library writes it, with a member that is an array.
    EXPECT_EQ(EntryAttachment::decode(file("two-from-another-program.plist")),
              (Attachments{{.id = *base::Uuid::parse(kIdText),
                            .filename = "Plan.pdf",
                            .data = {'%', 'P', 'D', 'F'}},
                           {.id = *base::Uuid::parse("E621E1F8-C36C-495A-93FC-0C247A3E6E60"),
                            .filename = "café 😀.txt",
                            .data = {}}}));
}

TEST(EntryAttachment, ReadsWhatIsStoredAlready) {
    const auto read = EntryAttachment::decode(file("three.plist"));
    ASSERT_EQ(read.size(), 3U);
    EXPECT_EQ(read[0].id, *base::Uuid::parse(kIdText));
    EXPECT_EQ(read[0].filename, "Plan.pdf");
    EXPECT_EQ(read[1].filename, "café 😀.txt");
    EXPECT_TRUE(read[1].data.empty());
    EXPECT_EQ(read[2].data, base::Bytes(300, 7));
}

TEST(EntryAttachment, RefusesWhatIsNoListOfAttachments) {
    const auto good = listOf(kGoodId, kGoodName, kGoodData);
    ASSERT_EQ(refusalOf(good), std::nullopt);
    auto anotherMagic = good;
    anotherMagic[7] = '1';
    const auto beyond = [](std::uint8_t kind) {
        return [kind](PlistBuilder& plist) { plist.claim(kind, 0xFFFF'FFFF'FFFF'FFFF); };
    };
    const std::string xml = "<?xml version=\"1.0\"?><plist version=\"1.0\"><array/></plist>";
    struct Case {
        const char* what;
        base::Bytes stored;
    };
    for (const auto& each : {
             Case{"no property list", {1, 2, 3}},
             Case{"another version", anotherMagic},
             Case{"an XML property list", {xml.begin(), xml.end()}},
             Case{"only zeros", base::Bytes(1000)},
             Case{"a string", listWith([](auto& plist) { plist.string("a"); })},
             Case{"an array of strings", listWith([](auto& plist) {
                      plist.array({1});
                      plist.string("a");
                  })},
             Case{"an array that holds itself", listWith([](auto& plist) { plist.array({0}); })},
             Case{"a dictionary that holds itself", listWith([](auto& plist) {
                      plist.array({1});
                      plist.dictionary({1, 1, 1}, {1, 1, 1});
                  })},
             Case{"an object that is not there", listWith([](auto& plist) { plist.array({1}); })},
             Case{"a huge array", listWith(beyond(0xA0))},
             Case{"a huge dictionary", listWith([&](auto& plist) {
                      plist.array({1});
                      beyond(0xD0)(plist);
                  })},
             Case{"a name of wrong type", listOf(kGoodId, kGoodData, kGoodData)},
             Case{"bytes of wrong type", listOf(kGoodId, kGoodName, kGoodName)},
             Case{"an identifier of wrong type", listOf(kGoodData, kGoodName, kGoodData)},
             Case{"no identifier", listOf(kGoodName, kGoodName, kGoodData)},
             Case{"huge bytes", listOf(kGoodId, kGoodName, beyond(0x40))},
             Case{"a huge name", listOf(kGoodId, beyond(0x50), kGoodData)},
             Case{"a huge name of two bytes a letter", listOf(kGoodId, beyond(0x60), kGoodData)},
             Case{"half a character in a name",
                  listOf(
                      kGoodId, [](auto& plist) { plist.string(u"a\xD83D"); }, kGoodData)},
             Case{"no ASCII in a name of ASCII",
                  listOf(
                      kGoodId, [](auto& plist) { plist.string("\xC3\xA9"); }, kGoodData)},
             Case{"a path", listOf(
                                kGoodId, [](auto& plist) { plist.string("../a"); }, kGoodData)},
             Case{"one byte too many", listOf(kGoodId, kGoodName,
                                              [](auto& plist) {
                                                  plist.data(base::Bytes(
                                                      EntryAttachment::kMaximumBytes + 1));
                                              })},
             Case{"one attachment twice", listWith([](auto& plist) {
                      plist.array({1, 1});
                      plist.dictionary({2, 3, 4}, {5, 6, 7});
                      plist.string("id");
                      plist.string("filename");
                      plist.string("data");
                      plist.string(kIdText);
                      plist.string("a");
                      plist.data({1});
                  })},
             Case{"two names", listWith([](auto& plist) {
                      plist.array({1});
                      plist.dictionary({2, 3, 4, 3}, {5, 6, 7, 6});
                      plist.string("id");
                      plist.string("filename");
                      plist.string("data");
                      plist.string(kIdText);
                      plist.string("a");
                      plist.data({1});
                  })},
         }) {
        EXPECT_EQ(refusalOf(each.stored), AttachmentErrorCase::invalidData) << each.what;
    }
}

TEST(EntryAttachment, DamagedBytesAreRefusedOrReadAsAValidList) {
    const auto stored = *EntryAttachment::encode(
        Attachments{attachment("a.txt", 20), attachment("世界", 0), attachment("b", 20)});
    const auto check = [](const base::Bytes& bytes) {
        try {
            EntryAttachment::validate(EntryAttachment::decode(bytes));
        } catch (const AttachmentError& error) {
            ASSERT_EQ(error.which(), AttachmentErrorCase::invalidData);
        }
    };
    for (std::size_t length = 1; length < stored.size(); ++length) {
        EXPECT_EQ(refusalOf({stored.begin(), stored.begin() + static_cast<std::ptrdiff_t>(length)}),
                  AttachmentErrorCase::invalidData)
            << length;
    }
    for (std::size_t i = 0; i < stored.size(); ++i) {
        for (int value = 0; value < 256; ++value) {
            auto damaged = stored;
            damaged[i] = static_cast<std::uint8_t>(value);
            check(damaged);
        }
    }
}

TEST(EntryAttachment, WhatBytesClaimCostsNeitherTimeNorMemory) {
    constexpr std::size_t kMany = 1'000'000;
    struct Case {
        const char* what;
        base::Bytes stored;
    };
    std::vector<Case> cases;
    cases.push_back({"arrays inside each other", listWith([](auto& plist) {
                         plist = PlistBuilder(4, 4);
                         for (std::size_t i = 1; i <= kMany; ++i) {
                             plist.array({i});
                         }
                         plist.array({});
                     })});
    cases.push_back({"arrays that share their members", listWith([](auto& plist) {
                         for (std::size_t i = 1; i <= 30; ++i) {
                             plist.array(std::vector<std::uint64_t>(10, i));
                         }
                         plist.data({1});
                     })});
    cases.push_back({"one file ten thousand times", listWith([](auto& plist) {
                         plist.array(std::vector<std::uint64_t>(10'000, 1));
                         plist.data(base::Bytes(kMany));
                     })});
    cases.push_back({"the same inside an attachment", listWith([](auto& plist) {
                         plist.array({1});
                         plist.dictionary(std::vector<std::uint64_t>(30'000, 2),
                                          std::vector<std::uint64_t>(30'000, 3));
                         plist.string("data");
                         plist.data(base::Bytes(kMany));
                     })});
    cases.push_back({"a long key again and again", listWith([](auto& plist) {
                         plist.array({1, 1, 1});
                         plist.dictionary(std::vector<std::uint64_t>(32, 2),
                                          std::vector<std::uint64_t>(32, 2));
                         plist.string(std::string(20 * kMany, 'k'));
                     })});
    cases.push_back({"bytes beside the list that nobody asks for", listWith([](auto& plist) {
                         plist.array({});
                         plist.data(base::Bytes(EntryAttachment::kMaximumTotalBytes + 70'000));
                     })});
    cases.push_back({"more bytes than three files have",
                     base::Bytes(EntryAttachment::kMaximumTotalBytes + 70'000, 'x')});
    for (const auto& each : cases) {
        const auto peak = peakKilobytes();
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(refusalOf(each.stored), AttachmentErrorCase::invalidData) << each.what;
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1)) << each.what;
        EXPECT_LT(peakKilobytes() - peak, 8 * 1024) << each.what;
    }
}

} // namespace korvex::tests
