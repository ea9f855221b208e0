#include "ui/text/RichTextClipboard.h"

#include "richtext/code/CodeSyntax.h"
#include "richtext/stored/RichTextSerializer.h"
#include "richtext/table/RichTextTable.h"
#include "richtext/text/HeadingLevel.h"
#include "ui/TextDump.h"
#include "ui/kit/words/Text.h"

#include <gtest/gtest.h>

namespace korvex::ui {
namespace {

using namespace richtext;

std::string pasted(const char* html) {
    QMimeData data;
    data.setHtml(QString::fromUtf8(html));
    return tests::dump(textFrom(data));
}

TEST(RichTextClipboard, HtmlKeepsWhatATextCanHold) {
    struct Case {
        const char* name;
        const char* html;
        const char* expected;
    };
    const std::array cases{
        Case{"a browser's page",
             R"(<meta http-equiv="content-type" content="text/html; charset=utf-8">
<h1 style="font-size: 32px; color: rgb(20, 20, 20);">Bread</h1>
<p style="color: #333; background-color: white; margin: 16px">Mix
   <strong>flour</strong> and&nbsp;<em>water</em>,&nbsp; see
   <a href="https://example.org/a?b=1&amp;c=2">the
   page</a>.<br>Then wait.</p><h2>Dough</h2><h5>Notes</h5>
<p><span style="font-weight:700">bold</span> <u>under</u> <del>gone</del></p>)",
             "# Bread\nMix *flour* and\u00a0/water/,  see "
             "[the page](https://example.org/a?b=1&c=2).\u2028Then wait.\n"
             "## Dough\n### Notes\n*bold* _under_ ~gone~"},
        Case{"lists inside lists",
             "<ul><li>one</li><li>two<ul><li>inner</li></ul></li><li>three</li></ul>"
             "<ol><li>first</li><li>second</li></ol><p>after</p>",
             "- one\n- two\n  {circle} inner\n- three\n1. first\n1. second\nafter"},
        Case{"lists that begin elsewhere, and bullets by their depth",
             "<ol start=3><li>three<ul><li>a<ul><li>b</li></ul></li>"
             "<li>c<ol TYPE=A\nSTART='27'><li>d</li></ol></li></ul></li><li>four</li></ol>"
             "<p>x</p><ul><li>e<ul style=\"list-style-type: square\"><li>f</li></ul></li></ul>"
             "<ol reversed start=\"-1\"><li>g</li></ol>",
             "1. three\n  {circle} a\n    {square} b\n  {circle} c\n    {upper-alpha}. d\n"
             "1. four\nx\n- e\n  {square} f\n1. g"},
        Case{"code", "<p>Run <code>ls -l</code> now.</p><pre><code>int a;\n  int b;</code></pre>",
             "Run `ls -l` now.\nauto> int a;\nauto>   int b;"},
        Case{"code that ends with a line break",
             "<pre><code>int a;\n\nint b;\n</code></pre><p>after</p>",
             "auto> int a;\nauto> \nauto> int b;\nafter"},
        Case{"a table of an office suite",
             R"(<table cellspacing="0" border="1" frame="void"><colgroup width="85"></colgroup>
<tr><td height="17" align="left"><b><font face="Liberation Sans">Day</font></b></td>
<td align="left"><b>Plan</b></td></tr>
<tr><td bgcolor="#FFFF00">Fri</td><td>Sintra</td></tr></table>)",
             "|0,0 *Day*\n|0,1 *Plan*\n|1,0 Fri\n|1,1 Sintra\n\n"},
        Case{"a word processor's paragraphs",
             R"(<style type="text/css">p { margin-bottom: 0.25cm }</style>
<h2 class="western">Title</h2><p style="margin-bottom: 0cm"><font size="5"><b>Large</b></font></p>
<p><span style="font-family:'Courier New';font-size:10pt">x = 1</span></p>)",
             "## Title\n## Large\n`x = 1`"},
        Case{
            "what a page does not show",
            R"(<p>a<span title=">" style="color: red; Display:NONE !important">X<i>Y</i></span>b</p>
<div hidden><p>X<br>Y<div>Z</div></div><ul><li>c<li style="display: none">X<ul><li>Y</ul><li>d</ul>
<!-- <div hidden> --><p hidden>X<p>e<div style='display:none'><b>X</div><p hidden>X</p>
<p style="display: none; display: block">f</p><div><span hidden>X</div>g<img hidden>h)",
            "ab\n- c\n- d\ne\nf\ngh"},
        Case{
            "all attributes count, and signs that only look like tags or quotes",
            R"(<div style="color:red" hidden>X</div><p hidden style="display:block">I <3 hidden cats</p>
<script>if (a<b) "<div hidden>"</script><p title=it's>a</p><p hidden>X</p><p title=it's>b)",
            "I <3 hidden cats\na\nb"},
        Case{
            "what is hidden ends where something begins that cannot stand in it",
            R"(<p hidden><b>X<section>a</section><ul><li>b<i hidden>X<li>c<p hidden>X<ul><li>Y</ul></ul>
<dl><dt hidden>X<dd>d</dl><table><tr hidden><th>X<tr><td>e<td hidden>X<table><tr><td>Y</table>Z
<tr><th hidden>X<td>f<p hidden>X<tr><td>g</table>)",
            "a\n- b\n- c\n  {circle} Y\nd\n|0,0 e\n|1,0 f\n|2,0 g\n\n"},
        Case{
            "pictures and other things are left out",
            R"(<p>a<img src="http://example.org/spy.png" alt="cat">b</p><script>alert(1)</script>)",
            "ab"},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(pasted(each.html), each.expected) << each.name;
    }
}

TEST(RichTextClipboard, HtmlListsBeginWhereTheySay) {
    QMimeData data;
    data.setHtml(QStringLiteral("<ol start=3><li>a<ol start=' 27'><li>b</ol><li>c</ol>"
                                "<ol><li>d</ol><ol start=many><li>e</ol>"));
    std::vector<std::int32_t> starts;
    textFrom(data).forEachParagraph([&](const AttributedString::ParagraphRun& run) {
        starts.push_back(run.style.lists.back()->start);
    });
    EXPECT_EQ(starts, (std::vector{3, 27, 3, 1, 1}));
}

TEST(RichTextClipboard, WhatIsCopiedIsPastedTheSame) {
    AttributedString text;
    text.append(u"Title\n", {.font = fontOf(HeadingLevel::level2)},
                {.spacingBefore = spacingBeforeOf(HeadingLevel::level2)});
    text.append(u"Some ", {}, {});
    text.append(u"bold", {.font = {.isBold = true}}, {});
    text.append(u" and ", {}, {});
    text.append(u"a link", {.link = "https://example.org/"}, {});
    text.append(u" & <tags>\n", {}, {});
    const auto outer = std::make_shared<TextList>(TextList{.marker = u"{disc}"});
    const auto inner =
        std::make_shared<TextList>(TextList{.marker = u"{lower-roman}.", .start = 4});
    text.append(u"one\n", {}, {.lists = {outer}});
    text.append(u"inner\ninner too\n", {}, {.lists = {outer, inner}});
    text.append(u"two\n", {}, {.lists = {outer}});
    const auto hollow = std::make_shared<TextList>(TextList{.marker = u"{square}"});
    text.append(u"three\n", {}, {.lists = {outer, hollow}});
    text.append(u"f()", {.font = {.isBold = true}, .korvexCodeLanguage = "plaintext"}, {});
    text.append(u" is\n", {}, {});
    text.append(u"int a;\nint b;\n", CodeSyntax::attributes("cpp", CodeKind::block), {});
    text.append(RichTextTable::make(2, 2));
    text.append(u"end", {}, {});
    text = RichTextSerializer::normalized(text);

    const auto data = mimeDataOf(text);
    EXPECT_TRUE(textFrom(*data).isEquivalentTo(text));
    EXPECT_EQ(data->text().toStdU16String(), text.text());

    // Others take the HTML, which says the same but for the code's language.
    QMimeData html;
    html.setHtml(data->html());
    const auto automatic =
        toQString(tests::dump(text)).replace(QLatin1String("cpp>"), QLatin1String("auto>"));
    EXPECT_EQ(tests::dump(textFrom(html)), toUtf8(automatic));
}

TEST(RichTextClipboard, DamagedAndOversizedFormatsCountAsNotOffered) {
    const auto plain = QStringLiteral("plain\r\ntext");
    QMimeData damaged;
    damaged.setText(plain);
    damaged.setData(QStringLiteral("text/rtf"), "no such thing");
    EXPECT_EQ(textFrom(damaged).text(), u"plain\ntext");

    QMimeData large;
    large.setText(plain);
    large.setData(QStringLiteral("application/rtf"),
                  "{\\rtf1 rtf" + QByteArray(4 * 1'048'576, ' ') + "}");
    large.setHtml(QStringLiteral("<p>html</p>") + QString(1'048'577, QLatin1Char(' ')));
    EXPECT_EQ(textFrom(large).text(), u"plain\ntext");

    for (const auto* const tags : {"<ul><li>", "<b></i>"}) {
        QMimeData deep;
        deep.setText(plain);
        deep.setHtml(QString::fromLatin1(tags).repeated(50'000) + QStringLiteral("x"));
        EXPECT_EQ(textFrom(deep).text(), u"plain\ntext") << "and not after minutes: " << tags;
    }

    QMimeData picture;
    picture.setHtml(QStringLiteral("<img src=\"http://example.org/a.png\">"));
    picture.setText(QStringLiteral("http://example.org/a.png"));
    EXPECT_EQ(textFrom(picture).text(), u"http://example.org/a.png");

    QMimeData several;
    several.setData(QStringLiteral("text/rtf"), "{\\rtf1 from rtf}");
    several.setHtml(QStringLiteral("<p>from html</p>"));
    several.setText(QStringLiteral("from text"));
    EXPECT_EQ(textFrom(several).text(), u"from rtf");
    EXPECT_EQ(plainTextFrom(several).text(), u"from text");
}

} // namespace
} // namespace korvex::ui
