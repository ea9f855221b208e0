#include "ui/text/CodeColors.h"

#include "TextFixture.h"
#include "richtext/ScriptedEngine.h"
#include "richtext/code/CodeSyntax.h"
#include "support/FakeRunLoop.h"
#include "ui/text/TextDocumentConversion.h"
#include "ui/text/TextFormats.h"

#include <QTest>
#include <QTextBlock>
#include <QTextLayout>

namespace korvex::ui {
namespace {

using namespace richtext;
using tests::ScriptedEngine;

/// Every word is a keyword, every digit a number, of what is inside a comment nothing.
std::optional<ScriptEngine::Value> analysis(std::string_view function,
                                            const std::vector<std::u16string_view>& arguments) {
    if (function != "korvexHighlight") {
        return std::nullopt;
    }
    const auto code = arguments[0];
    ScriptEngine::Array runs;
    bool isComment = false;
    for (std::size_t i = 0; i < code.size();) {
        isComment = code[i] == u'/' || (isComment && code[i] != u'*');
        auto end = i + 1;
        if (!isComment && code[i] >= u'a' && code[i] <= u'z') {
            while (end < code.size() && code[end] >= u'a' && code[end] <= u'z') {
                ++end;
            }
            runs.push_back(ScriptedEngine::run(static_cast<double>(i), static_cast<double>(end - i),
                                               "keyword"));
        } else if (!isComment && code[i] >= u'0' && code[i] <= u'9') {
            runs.push_back(ScriptedEngine::run(static_cast<double>(i), 1, "number"));
        }
        i = end;
    }
    return ScriptedEngine::array(std::move(runs));
}

class CodeColorsTest : public tests::TextFixture {
protected:
    /// Of each block the coloured words with the first letter of their colour.
    std::string colors() const {
        std::string result;
        for (auto block = document.begin(); block.isValid(); block = block.next()) {
            for (const auto& range : block.layout()->formats()) {
                const auto color = range.format.foreground().color();
                const bool isKeyword =
                    color == look().foreground(Color::named(SystemColor::purple));
                result += (isKeyword ? "k:" : "n:") +
                          block.text().mid(range.start, range.length).toStdString() + " ";
            }
            result += "|";
        }
        return result;
    }
    void waitForColors() {
        bool hasArrived = false;
        const auto arrival = code.arrived().connect([&] { hasArrived = true; });
        while (!hasArrived) {
            runLoop.waitForPosted();
            runLoop.runPosted();
        }
    }
    bool becomes(const std::string& expected) {
        return QTest::qWaitFor([&] {
            runLoop.runPosted();
            return colors() == expected;
        });
    }
    static AttributedString block(std::u16string_view text) {
        return AttributedString(text, CodeSyntax::attributes("cpp", CodeKind::block));
    }

    tests::FakeRunLoop runLoop;
    CodeHighlighter code{ScriptedEngine::factory({.call = analysis}), ScriptedEngine::library,
                         runLoop, log};
    QTextDocument document;
};

TEST_F(CodeColorsTest, ColoursComeLaterAndChangeNothing) {
    auto text = block(u"int a 1\n/ int\nback * if\n/ ");
    text.append(u"if", CodeSyntax::attributes("cpp", CodeKind::inlineCode), {});
    text.append(u" plain ", {}, {});
    text.append(u"ls 2", CodeSyntax::attributes("bash", CodeKind::inlineCode), {});
    setText(document, text, look());
    document.setTextWidth(300);
    const auto size = document.size();
    EXPECT_FALSE(colorCode(document, code, look()));
    EXPECT_EQ(colors(), "||||");
    waitForColors();
    if (!colorCode(document, code, look())) {
        waitForColors();
        EXPECT_TRUE(colorCode(document, code, look()));
    }
    EXPECT_EQ(colors(), "k:int k:a n:1 ||k:if |k:ls n:2 |")
        << "lines of one block of code are analysed together";
    EXPECT_TRUE(textOf(document).isEquivalentTo(text));
    EXPECT_EQ(document.availableUndoSteps(), 0);
    EXPECT_FALSE(document.isModified());
    EXPECT_EQ(document.size(), size);
}

TEST_F(CodeColorsTest, WhileSomebodyTypesOldColoursStayWithTheirWords) {
    setText(document, block(u"one two\nthree"), look());
    document.documentLayout(); // without one nobody is told of changes
    CodeColors following(document, code, look());
    ASSERT_TRUE(becomes("k:one k:two |k:three |")) << colors();
    QTextCursor cursor(&document);
    cursor.setPosition(4);
    cursor.insertText(QStringLiteral("9 "), document.begin().begin().fragment().charFormat());
    EXPECT_EQ(colors(), "k:one k:two |k:three |");
    EXPECT_TRUE(becomes("k:one n:9 k:two |k:three |")) << colors();
    // What is no code any more loses its colours.
    cursor.select(QTextCursor::Document);
    changeAttributes(cursor, look(), [](CharacterAttributes& each) { each = {}; });
    EXPECT_TRUE(becomes("||")) << colors();
}

TEST_F(CodeColorsTest, AnotherAppearanceHasOtherColours) {
    setText(document, block(u"int"), look());
    CodeColors following(document, code, look());
    ASSERT_TRUE(becomes("k:int |")) << colors();
    const auto before = document.begin().layout()->formats().front().format.foreground();
    preferences.setAppearance(app::AppPreferences::Appearance::dark);
    following.setLook(look());
    EXPECT_EQ(colors(), "k:int |");
    EXPECT_NE(document.begin().layout()->formats().front().format.foreground(), before);
}

} // namespace
} // namespace korvex::ui
