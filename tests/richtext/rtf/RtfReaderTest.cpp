#include "richtext/RandomText.h"
#include "richtext/TextDump.h"

#include "richtext/rtf/RtfReader.h"
#include "richtext/rtf/RtfWriter.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <random>
#include <string>
#include <vector>

namespace korvex::richtext {
namespace {

std::string contents(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

AttributedString read(std::string_view document) {
    return readRtf({reinterpret_cast<const std::uint8_t*>(document.data()), document.size()});
}

/// Each `.rtf` of the folder, which is what `.txt` beside it says, and can be written.
void expectCases(const char* folder) {
    std::vector<std::filesystem::path> files;
    for (const auto& entry :
         std::filesystem::directory_iterator(std::filesystem::path(KORVEX_RTF_CASES) / folder)) {
        if (entry.path().extension() == ".rtf") {
            files.push_back(entry.path());
        }
    }
    std::sort(files.begin(), files.end());
    EXPECT_FALSE(files.empty());
    for (const auto& file : files) {
        SCOPED_TRACE(file.filename().string());
        const auto text = read(contents(file));
        EXPECT_EQ(dump(text), contents(std::filesystem::path(file).replace_extension(".txt")));
        EXPECT_TRUE(readRtf(writeRtf(text)).isEquivalentTo(text));
    }
}

TEST(RtfReader, ReadsTheNativeDialect) {
    expectCases("dialect");
}
TEST(RtfReader, ReadsWhatOtherProgramsWrite) {
    expectCases("office");
}
TEST(RtfReader, MakesTheBestOfWhatIsDamaged) {
    expectCases("damaged");
}

TEST(RtfReader, RefusesWhatIsNoRtf) {
    for (const std::string_view document :
         {"", "{", "{\\rt", "\\rtf1 text", "plain text", "{\\urtf1 text}", "<rtf>", "PK\x03\x04"}) {
        EXPECT_THROW(read(document), RtfError) << document;
    }
}

/// Files that ask for much with little. `count` is how often they repeat what is in them.
struct Family {
    const char* name;
    std::function<std::string(int count)> make;
};

std::string repeated(std::string_view piece, int count) {
    std::string text;
    for (; count > 0; --count) {
        text += piece;
    }
    return text;
}

/// `#` in the piece is the number of the repetition.
std::string numbered(std::string_view piece, int count) {
    std::string text;
    for (int number = 1; number <= count; ++number) {
        for (const auto byte : piece) {
            text += byte == '#' ? std::to_string(number) : std::string(1, byte);
        }
    }
    return text;
}

std::string document(std::string_view content) {
    return "{\\rtf1\\cocoartf1 " + std::string(content) + "}";
}

const std::vector<Family>& families() {
    static const std::vector<Family> all{
        {"groups", [](int count) { return document(repeated("{", count) + "x\\par"); }},
        {"groups with styles",
         [](int count) { return document(repeated("{\\b\\li5 x}\\par", count)); }},
        {"fonts",
         [](int count) {
             return document("{\\fonttbl" + numbered("{\\f#\\fcharset128 a;}", count) + "}\\f9 x");
         }},
        {"tables of fonts",
         [](int count) { return document(repeated("{\\fonttbl\\f1 a;}\\f1 a", count)); }},
        {"colors",
         [](int count) {
             return document("{\\colortbl" + repeated("\\red1;", count) + "}\\cf9 x");
         }},
        {"cells", [](int count) { return document(repeated("\\cell", count) + "x"); }},
        {"rows", [](int count) { return document(repeated("\\cell\\row", count) + "x"); }},
        {"rows of one definition",
         [](int count) {
             return document("\\trowd" + repeated("\\clmgf\\clvmgf\\clvmrg\\cellx1", 300) +
                             repeated("\\intbl x\\cell\\row", count));
         }},
        {"merged rows",
         [](int count) {
             return document("\\trowd" + numbered("\\clvmgf\\cellx#", 256) +
                             repeated("\\cell", 256) + "\\row\\trowd" +
                             numbered("\\clvmrg\\cellx#", 256) +
                             repeated(repeated("\\cell", 256) + "\\row", count / 256));
         }},
        {"uneven rows",
         [](int count) {
             return "{\\rtf1 " +
                    numbered("\\trowd\\cellx#\\cellx2#\\cell\\cell\\row\\trowd\\cellx#\\cell\\row",
                             count) +
                    "x}";
         }},
        {"edges of cells",
         [](int count) { return document("\\trowd" + repeated("\\cellx9", count) + "x"); }},
        {"nested tables",
         [](int count) {
             return document(repeated("\\pard\\intbl\\itap16 x\\nestcell\\nestrow", count));
         }},
        {"tables that open and close",
         [](int count) { return document(repeated("\\intbl\\itap16 x\\par\\pard\\par", count)); }},
        {"tab stops", [](int count) { return document(numbered("\\tx-#", count) + "x\\par"); }},
        {"styles of paragraphs",
         [](int count) { return document(numbered("\\li#\\par", count) + "x"); }},
        {"styles of characters",
         [](int count) { return document(numbered("\\fsmilli# x", count)); }},
        {"links",
         [](int count) {
             return document(numbered("{\\field{\\*\\fldinst HYPERLINK #}{\\fldrslt x}}", count));
         }},
        {"lists",
         [](int count) {
             return document("{\\*\\listtable" + numbered("{\\list{\\listlevel}\\listid#}", count) +
                             "}{\\*\\listoverridetable" +
                             numbered("{\\listoverride\\listid#\\ls#}", count) + "}" +
                             numbered("\\ls# x\\par", count));
         }},
        {"overridden lists",
         [](int count) {
             return document(
                 "{\\*\\listtable{\\list{\\listlevel}\\listid1}}{\\*\\listoverridetable" +
                 numbered("{\\listoverride\\listid1{\\lfolevel{\\listlevel\\levelstartat#"
                          "{\\leveltext\\'02\\'00.}}}\\ls#}",
                          count) +
                 "}" + numbered("\\ls# x\\par", count));
         }},
        {"notes", [](int count) { return document(repeated("{\\footnote x}\\chftn", count)); }},
        {"notes in notes",
         [](int count) { return document(repeated("{\\footnote x\\par", count)); }},
        {"drawings",
         [](int count) {
             return document(repeated("{\\shp{\\shpinst{\\shptxt x\\par}}{\\shprslt y}}", count));
         }},
        {"numberings",
         [](int count) { return document(numbered("{\\*\\pn\\pndec\\pnstart#}x\\par", count)); }},
        {"skipped groups",
         [](int count) { return document("{\\*\\unknown" + repeated("{\\a{}", count)); }},
        {"lead bytes",
         [](int count) {
             return document("{\\fonttbl\\f0\\fcharset128 a;}" + repeated("{\\'82}", count));
         }},
        {"code pages",
         [](int count) {
             return document("{\\fonttbl" + numbered("\\f#\\cpg# a;", count) + "}" +
                             numbered("\\f#\\'e4", count));
         }},
        {"a long word", [](int count) { return document("\\" + repeated("a", count) + " x"); }},
        {"a long number", [](int count) { return document("\\li" + repeated("9", count) + " x"); }},
        {"binary data", [](int count) { return document(repeated("\\bin3 }}}", count) + "x"); }},
    };
    return all;
}

#ifndef __SANITIZE_ADDRESS__
/// Reads in a process that may not have more memory than a file of that size deserves.
[[noreturn]] void readWithLittleMemory(const std::string& file) {
    constexpr std::size_t kPerByte = 16;
    constexpr std::size_t kAlways = std::size_t{16} << 20U;
    std::ifstream memory("/proc/self/statm");
    std::size_t pages = 0;
    memory >> pages;
    const auto limit =
        pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) + kAlways + kPerByte * file.size();
    const rlimit addresses{limit, limit};
    setrlimit(RLIMIT_AS, &addresses);
    const auto text = read(file);
    std::_Exit(text.length() <= file.size() ? 0 : 1);
}
#endif

TEST(RtfReader, StaysSmallWithHostileFiles) {
    for (const auto& family : families()) {
        SCOPED_TRACE(family.name);
#ifndef __SANITIZE_ADDRESS__
        const auto large = family.make(100'000);
        EXPECT_EXIT(readWithLittleMemory(large), testing::ExitedWithCode(0), "");
#endif
        const auto file = family.make(8'000);
        const auto text = read(file);
        // No unit comes from less than a byte.
        EXPECT_LE(text.length(), file.size());
        const auto written = writeRtf(text);
        constexpr std::size_t kMostPerByte = 200;
        EXPECT_LE(written.size(), kMostPerByte * file.size());
        EXPECT_EQ(writeRtf(readRtf(written)), written);
    }
}

TEST(RtfReader, SurvivesEveryCutAndManyChanges) {
    std::mt19937_64 random(7);
    const auto below = [&](std::size_t limit) {
        return static_cast<std::size_t>(random() % limit);
    };
    for (std::uint64_t seed = 0; seed < 60; ++seed) {
        const auto written = writeRtf(RandomText(seed).next(3));
        const std::string whole(written.begin(), written.end());
        for (int change = 0; change < 40; ++change) {
            auto damaged = whole;
            // What stands first says that it is RTF at all.
            constexpr std::size_t kStart = 5;
            for (auto count = 1 + below(4); count > 0 && damaged.size() > kStart + 1; --count) {
                const auto place = kStart + below(damaged.size() - kStart);
                switch (below(4)) {
                case 0:
                    damaged.resize(place);
                    break;
                case 1:
                    damaged[place] = static_cast<char>(below(256));
                    break;
                case 2:
                    damaged.erase(place, 1 + below(20));
                    break;
                default:
                    damaged.insert(place, whole.substr(below(whole.size()), 1 + below(40)));
                    break;
                }
            }
            const auto text = read(damaged);
            ASSERT_TRUE(readRtf(writeRtf(text)).isEquivalentTo(text)) << damaged;
        }
    }
}

TEST(RtfReader, TakesWordsInAnyOrder) {
    const std::vector<std::string> pieces{
        "{",
        "}",
        "{",
        "}",
        "{\\*",
        "x",
        " ",
        "two words",
        "\\\n",
        "\\par",
        "\\'82",
        "\\'a0",
        "\\u8364",
        "\\uc",
        "\\bin2",
        ";",
        "\\b",
        "\\b0",
        "\\fs",
        "\\fsmilli",
        "\\f",
        "\\cf",
        "\\cb",
        "\\plain",
        "\\pard",
        "\\pard",
        "\\li",
        "\\tx",
        "\\sl",
        "\\slmult1",
        "\\slminimum",
        "\\slmaximum",
        "\\qc",
        "\\ls",
        "\\ilvl",
        "\\intbl",
        "\\itap",
        "\\itap1",
        "\\itap2",
        "\\itap3",
        "\\trowd",
        "\\trowd",
        "\\cellx",
        "\\cellx1000",
        "\\cellx2000",
        "\\clmgf",
        "\\clmrg",
        "\\clvmgf",
        "\\clvmrg",
        "\\cell",
        "\\cell",
        "\\cell",
        "\\row",
        "\\row",
        "\\nestcell",
        "\\nestcell",
        "\\nestrow",
        "\\lastrow",
        "\\clwWidth",
        "\\clbrdrl",
        "\\brdrs",
        "\\brdrw",
        "\\clpadt",
        "\\trleft",
        "\\trgaph",
        "\\korvexabsent",
        "\\field",
        "\\fldinst",
        "\\fldrslt",
        "HYPERLINK ",
        "\"",
        "\\fonttbl",
        "\\fcharset",
        "\\colortbl",
        "\\red",
        "\\listtable",
        "\\list",
        "\\listlevel",
        "\\levelmarker",
        "\\leveltext",
        "\\listid",
        "\\leveltemplateid",
        "\\listoverridetable",
        "\\listoverride",
        "\\pn",
        "\\pndec",
        "\\pntxta",
        "\\upr",
        "\\ud",
        "\\v",
        "\\sect",
        "\\korvexnofeed",
        "\\nesttableprops",
        "\\footnote",
        "\\footnote",
        "\\chftn",
        "\\shp",
        "\\shpinst",
        "\\shptxt",
        "\\shprslt",
        "\\object",
        "\\result",
        "\\page",
        "\\lfolevel",
        "\\unknown",
        "{\\*\\listtable{\\list{\\listlevel\\leveltemplateid1}\\listid1}}"
        "{\\*\\listoverridetable{\\listoverride\\listid1\\ls1}}"};
    std::mt19937_64 random(11);
    const auto below = [&](std::size_t limit) {
        return static_cast<std::size_t>(random() % limit);
    };
    for (int run = 0; run < 3000; ++run) {
        std::string file = below(2) == 0 ? "{\\rtf1\\cocoartf1 " : "{\\rtf1 ";
        for (auto count = below(120); count > 0; --count) {
            const auto& piece = pieces[below(pieces.size())];
            file += piece;
            if (piece.size() > 1 && below(3) == 0) {
                file += std::to_string(static_cast<int>(below(12)) - 1);
            }
        }
        const auto text = read(file);
        const auto written = writeRtf(text);
        const auto again = readRtf(written);
        ASSERT_TRUE(again.isEquivalentTo(text)) << file << "\n"
                                                << dump(text) << "\n"
                                                << dump(again);
        ASSERT_EQ(writeRtf(again), written) << file;
    }
}

} // namespace
} // namespace korvex::richtext
