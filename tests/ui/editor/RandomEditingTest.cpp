#include "richtext/text/Formatting.h"
#include "ui/editor/RichTextFixture.h"
#include "ui/editor/RichTextRuns.h"
#include "ui/text/RichTextClipboard.h"
#include "ui/text/TextDocument.h"
#include "ui/text/TextDocumentConversion.h"

#include <QClipboard>
#include <QMimeData>
#include <QTextFrame>

#include <algorithm>
#include <array>
#include <map>
#include <random>

namespace korvex::ui {
namespace {

using richtext::AttributedString;
using richtext::RichTextAction;
using Kind = RichTextAction::Kind;

constexpr std::array kOffered{
    "x",
    "x\ny",
    "x\n\ny\n",
    "<p>x</p><p><b>y</b> z</p>",
    "<ul><li>x</li><li>y<ul><li>z</li></ul></li></ul>",
    "<ol><li>x</li></ol><p>y</p>",
    "<h1>x</h1><p>y</p>",
    "<pre>x\ny</pre>",
    "<p>x</p><table><tr><td>y</td><td>z</td></tr></table><p>w</p>",
};
constexpr auto kPaste = "<Ctrl+V>";
constexpr std::array kKeys{
    "a",
    "b",
    "<Return>",
    "<Return>",
    "<Shift+Return>",
    "<Backspace>",
    "<Backspace>",
    "<Del>",
    "<Tab>",
    "<Tab>",
    "<Shift+Tab>",
    "<Ctrl+Return>",
    "<Ctrl+Shift+7>",
    "<Ctrl+Shift+8>",
    "<Ctrl+Shift+8>",
    "<Ctrl+Alt+0>",
    "<Ctrl+Alt+1>",
    "<Ctrl+Alt+2>",
    "<Ctrl+B>",
    "<Ctrl+I>",
    "<Ctrl+E>",
    "<code>",
    "<link>",
    "<table>",
    "<Home>",
    "<End>",
    "<Ctrl+X>",
    kPaste,
};
/// The test runs so many random stories; RICH_RUNS in the environment asks for others, to look for
/// faults for longer.
constexpr int kStories = 30;

class RandomEditingTest : public tests::RichTextFixture {
protected:
    std::size_t below(std::size_t limit) { return static_cast<std::size_t>(random() % limit); }
    int place() {
        return static_cast<int>(below(static_cast<std::size_t>(edit.document()->characterCount())));
    }
    std::string act() {
        switch (below(6)) {
        case 0: {
            auto cursor = edit.textCursor();
            cursor.setPosition(place());
            edit.setTextCursor(cursor);
            return "move to " + std::to_string(cursor.position());
        }
        case 1: {
            auto cursor = edit.textCursor();
            cursor.setPosition(place());
            cursor.setPosition(place(), QTextCursor::KeepAnchor);
            edit.setTextCursor(cursor);
            return "select " + std::to_string(cursor.anchor()) + " to " +
                   std::to_string(cursor.position());
        }
        case 2: {
            const auto* const offered = kOffered[below(kOffered.size())];
            auto* const data = new QMimeData;
            if (*offered == '<') {
                data->setHtml(QString::fromUtf8(offered));
            } else {
                data->setText(QString::fromUtf8(offered));
            }
            QApplication::clipboard()->setMimeData(data);
            paste();
            return "paste " + std::string(offered);
        }
        case 3:
            if (edit.textCursor().currentTable()) {
                const auto action = kTableActions[below(kTableActions.size())];
                TableEditing(edit).perform(action);
                return "table action " + std::to_string(static_cast<int>(action));
            }
            [[fallthrough]];
        default: {
            const auto* const key = kKeys[below(kKeys.size())];
            if (key == kPaste) {
                paste();
                return "paste";
            }
            type(QString::fromUtf8(key));
            return key;
        }
        }
    }
    /// Pastes what the clipboard has, and holds what is there then against the words and lines that
    /// are to be there.
    void paste() {
        const auto cursor = edit.textCursor();
        const auto replaced = textOf(cursor);
        auto expected = lettersOf(edit.content());
        for (const auto& [letter, count] : lettersOf(replaced)) {
            expected[letter] -= count;
        }
        const auto pasted = textFrom(*QApplication::clipboard()->mimeData());
        for (const auto& [letter, count] : lettersOf(pasted)) {
            expected[letter] += count;
        }
        std::erase_if(expected, [](const auto& entry) { return entry.second == 0; });
        auto isInLine = cursor.hasSelection() ? replaced.text().find(u'\n') == std::u16string::npos
                                              : richtext::isInlineCode(typedAttributes(cursor));
        replaced.forEachRun([&](const AttributedString::CharacterRun& run) {
            isInLine = isInLine && richtext::isInlineCode(run.attributes);
        });

        edit.paste();
        const auto now = edit.content();
        EXPECT_EQ(lettersOf(now), expected) << "words";
        auto lines = pasted.text();
        if (isInLine) {
            std::replace(lines.begin(), lines.end(), u'\n', u' ');
        }
        const auto end = offsetOf(*edit.document(), edit.textCursor().position());
        EXPECT_TRUE(withoutLastFeeds(now.text().substr(0, end)).ends_with(withoutLastFeeds(lines)))
            << "lines";
    }
    /// How far the paragraphs stand apart, and how high their lines are. What an empty last one
    /// looks like is not in the text.
    static std::vector<double> spacing(const QTextDocument& document) {
        const auto last = document.lastBlock();
        std::vector<double> result;
        if (document.begin() != last) {
            result.push_back(document.rootFrame()->frameFormat().topMargin());
        }
        for (auto block = document.begin(); block != last; block = block.next()) {
            if (!isGap(block)) {
                result.push_back(block.blockFormat().lineHeight());
                result.push_back(
                    block.next() == last && isEmpty(last) ? 0 : block.blockFormat().bottomMargin());
            }
        }
        return result;
    }
    static std::map<char16_t, int> lettersOf(const AttributedString& text) {
        std::map<char16_t, int> result;
        for (const auto unit : text.text()) {
            if (unit != u'\n' && unit != u' ') {
                ++result[unit];
            }
        }
        return result;
    }
    static std::u16string withoutLastFeeds(std::u16string text) {
        while (text.ends_with(u'\n')) {
            text.pop_back();
        }
        return text;
    }
    /// Qt does not take back what became of the first paragraph's end.
    static AttributedString comparable(AttributedString text) {
        text.editAttributes({text.paragraphAt(0).end() - 1, 1},
                            [](richtext::CharacterAttributes& attributes) { attributes = {}; });
        return text;
    }

    std::mt19937_64 random;
};

TEST_F(RandomEditingTest, EverythingIsTakenBackAndDoneAgainAndShownAnew) {
    const auto asked = qEnvironmentVariableIntValue("RICH_RUNS");
    const auto stories = static_cast<std::uint64_t>(asked > 0 ? asked : kStories);
    for (std::uint64_t seed = 1; seed <= stories; ++seed) {
        random.seed(seed);
        edit.setContent({});
        std::string story = "seed " + std::to_string(seed);
        for (int step = 0; step < 40; ++step) {
            story += ", " + act();
            ASSERT_FALSE(HasFailure()) << story << "\n" << content();
            const auto now = edit.content();
            TextDocument anew;
            setText(anew, now, edit.look());
            ASSERT_TRUE(textOf(anew).isEquivalentTo(now)) << story << "\n" << content();
            ASSERT_EQ(spacing(*edit.document()), spacing(anew)) << story << "\n" << content();
        }
        const auto last = edit.content();
        std::vector<AttributedString> texts{last};
        while (edit.document()->isUndoAvailable()) {
            edit.undo();
            texts.push_back(edit.content());
        }
        EXPECT_TRUE(texts.back().isEmpty()) << story << "\n" << content();
        for (auto text = texts.rbegin(); text != texts.rend(); ++text) {
            EXPECT_TRUE(comparable(edit.content()).isEquivalentTo(comparable(*text)))
                << story << "\n"
                << content() << "\nwas\n"
                << tests::dump(*text);
            edit.redo();
        }
        if (HasFailure()) {
            break;
        }
    }
}

} // namespace
} // namespace korvex::ui
