// The longest time from the press of a key to the painted character, in a text of nearly 10,000
// characters with a table of 20 × 20: in a paragraph at the front, so that all that follows moves
// when the line wraps, in a cell, in code, and at the end. Against the same keys in a bare editor
// of the same size that shows the same document ("limit"), and against one frame of a screen
// ("frame").

#include "support/BenchWindow.h"
#include "support/Frames.h"

#include "richtext/code/CodeSyntax.h"
#include "richtext/table/RichTextTable.h"
#include "ui/editor/RichTextEdit.h"
#include "ui/entries/BoardPage.h"

#include <QKeyEvent>
#include <QTextEdit>

#include <algorithm>

namespace {

using namespace korvex;
using richtext::AttributedString;
using richtext::RichTextTable;

constexpr std::size_t kCharacters = 9'400;
constexpr int kKeysInEachPlace = 100;

AttributedString table() {
    auto text = RichTextTable::make(20, 20);
    const auto cells = RichTextTable::cells(text, text.styleAt(0).cells.front()->table);
    for (auto cell = cells.rbegin(); cell != cells.rend(); ++cell) {
        const auto style = text.styleAt(cell->range.location);
        const std::u16string name{u'c', u'e', u'l',
                                  u'l', u' ', static_cast<char16_t>(u'a' + cell->cell->row)};
        text.replace({cell->range.location, 0},
                     AttributedString(name, text.attributesAt(cell->range.location), style));
    }
    return text;
}

/// Paragraphs, a piece of code, a table, and paragraphs.
AttributedString longText() {
    AttributedString text;
    const auto addParagraphs = [&](std::size_t until) {
        while (text.length() < until) {
            text.append(u"We land on Friday evening and have ", {}, {});
            text.append(u"three days", {.font = {.isBold = true}}, {});
            text.append(u" before the others come, so the old town can wait until they do.\n", {},
                        {});
        }
    };
    addParagraphs(2'000);
    for (int line = 0; line < 20; ++line) {
        text.append(u"    const auto days = plan(\"Lisbon\", 3); // and nights\n",
                    richtext::CodeSyntax::attributes("cpp", richtext::CodeKind::block), {});
    }
    text.append(table());
    addParagraphs(kCharacters);
    return text;
}

/// An editor with a text, once it has been painted.
class Typing {
public:
    explicit Typing(QTextEdit& edit) : m_edit(edit), m_paints(*edit.viewport()) {
        m_edit.viewport()->update();
        m_paints.waitForMoreThan(0);
    }

    /// Seconds for each of the keys, typed behind the first place where the text says `place`.
    void type(const QString& place, std::vector<double>& times) {
        auto cursor = m_edit.document()->find(place);
        cursor.clearSelection();
        m_edit.setTextCursor(cursor);
        QApplication::processEvents();
        const auto text = QStringLiteral("no plans at all ");
        for (int i = 0; i < kKeysInEachPlace; ++i) {
            times.push_back(m_paints.secondsOf([&] {
                QKeyEvent press(QEvent::KeyPress, 0, Qt::NoModifier, text.mid(i % text.size(), 1));
                QApplication::sendEvent(&m_edit, &press);
            }));
        }
    }

private:
    QTextEdit& m_edit;
    bench::PaintCount m_paints;
};

/// The desktop app's window with its editor open.
class Window {
public:
    Window()
        : m_window([](bench::OpenStore& store) {
              auto entries = store.entries();
              entries.createText({.rich = longText(), .board = store.inbox(), .now = bench::kNow});
          }) {
        auto& page = *m_window.window().findChild<ui::BoardPage*>();
        bench::PaintCount(*page.list().viewport()).waitForMoreThan(0);
        Q_EMIT page.list().editRequested(0, 0);
        m_edit = page.findChild<ui::RichTextEdit*>();
    }

    QTextEdit& edit() { return *m_edit; }

private:
    bench::BenchWindow m_window;
    ui::RichTextEdit* m_edit = nullptr;
};

void typeEverywhere(benchmark::State& state, Typing& typing) {
    std::vector<double> all;
    for (const char* const place : {"three", "nights", "cell j", "the others come, so"}) {
        std::vector<double> times;
        typing.type(QString::fromLatin1(place), times);
        state.counters[place] = *std::max_element(times.begin(), times.end());
        all.insert(all.end(), times.begin(), times.end());
    }
    bench::report(state, all);
}

void korvexEditor(benchmark::State& state) {
    bench::application();
    for (auto _ : state) {
        Window window;
        Typing typing(window.edit());
        typeEverywhere(state, typing);
    }
}

void bareEditor(benchmark::State& state) {
    bench::application();
    for (auto _ : state) {
        QTextEdit bare;
        {
            Window window;
            // It has been laid out once it is painted; only then its size is known.
            const Typing painted(window.edit());
            bare.setDocument(window.edit().document()->clone(&bare));
            bare.resize(window.edit().size());
        }
        bare.show();
        Typing typing(bare);
        typeEverywhere(state, typing);
    }
}

const bool kAreAdded = [] {
    bench::add("korvex", korvexEditor);
    bench::add("limit", bareEditor);
    bench::addFrame();
    return true;
}();

} // namespace
