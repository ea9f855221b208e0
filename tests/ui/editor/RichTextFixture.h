#pragma once

#include "richtext/text/RichTextCommand.h"
#include "ui/TextDump.h"
#include "ui/WindowFixture.h"
#include "ui/editor/RichTextEdit.h"
#include "ui/editor/TableEditing.h"
#include "ui/text/ListMarkers.h"
#include "ui/text/TextFormats.h"
#include "ui/text/TextLook.h"

#include <QRegularExpression>

namespace korvex::tests {

/// An editor of formatted text that keys are typed into.
class RichTextFixture : public WindowFixture {
protected:
    RichTextFixture() {
        edit.setLook(ui::TextLook(theme));
        edit.resize(500, 400);
        edit.show();
        edit.setContent({});
        edit.setFocus();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&edit));
    }

    /// Types text and, in angle brackets, keys: "a<Return>", "<Ctrl+B>". "<link>" sets one on the
    /// selection, "<table>" inserts one of 2 × 2, "<code>" makes a code block.
    void type(const QString& keys) {
        static const QRegularExpression token(QStringLiteral("<([^<>]+)>|([^<]+)"));
        for (auto match = token.globalMatch(keys); match.hasNext();) {
            const auto found = match.next();
            const auto name = found.captured(1);
            if (name.isEmpty()) {
                QTest::keyClicks(&edit, found.captured(2));
            } else if (name == QLatin1String("link")) {
                edit.setLink(QStringLiteral("https://e.org"));
            } else if (name == QLatin1String("table")) {
                ui::TableEditing(edit).insert(2, 2);
            } else if (name == QLatin1String("code")) {
                edit.perform({{richtext::RichTextAction::Kind::codeBlock}});
            } else {
                const auto sequence = QKeySequence::fromString(name, QKeySequence::PortableText);
                ASSERT_EQ(sequence.count(), 1) << name.toStdString();
                QTest::keyClick(&edit, sequence[0].key(), sequence[0].keyboardModifiers());
            }
        }
    }
    std::string content() { return dump(edit.content()); }
    /// What is drawn before the items of lists; "-" for what is no item.
    std::string markers() {
        std::string result;
        ui::ListMarkers markers(edit.look());
        for (auto block = edit.document()->begin(); block.isValid(); block = block.next()) {
            result += markers.count(block) ? markers.text().toStdString() : "-";
        }
        return result;
    }
    std::string typed(const char* keys) {
        edit.setContent({});
        type(QString::fromUtf8(keys));
        return content();
    }

    ui::RichTextEdit edit;
};

} // namespace korvex::tests
