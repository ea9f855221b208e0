#include "ui/editor/LanguageMenu.h"

#include "ui/WindowFixture.h"

#include <QLineEdit>
#include <QListWidget>
#include <QPointer>

#include <future>

namespace korvex::ui {
namespace {

/// Knows languages only, and those once it is let.
class LanguagesEngine final : public richtext::ScriptEngine {
public:
    explicit LanguagesEngine(std::shared_future<void> gate) : m_gate(std::move(gate)) {}

    bool evaluate(std::string_view) override { return true; }
    std::optional<Value> call(std::string_view function,
                              const std::vector<std::u16string_view>&) override {
        if (function != "korvexLanguages") {
            return std::nullopt;
        }
        m_gate.wait();
        Value result;
        result.kind = Value::Kind::array;
        for (const auto& [id, name] :
             {std::pair("bash", "Bash"), std::pair("c", "C"), std::pair("cpp", "C++"),
              std::pair("csharp", "C#"), std::pair("objectivec", "Objective-C")}) {
            Value language;
            language.kind = Value::Kind::object;
            for (const auto& [member, text] : {std::pair("id", id), std::pair("name", name)}) {
                Value value;
                value.kind = Value::Kind::string;
                value.string = text;
                language.object.emplace_back(member, std::move(value));
            }
            result.array.push_back(std::move(language));
        }
        return result;
    }

private:
    std::shared_future<void> m_gate;
};

class LanguageMenuTest : public tests::WindowFixture {
protected:
    LanguageMenuTest() {
        window.resize(600, 500);
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    }
    ~LanguageMenuTest() override {
        if (!isTold) {
            gate.set_value();
        }
    }

    void open(const char* current) {
        menu = new LanguageMenu(languages, QString::fromUtf8(current), theme, &window);
        QObject::connect(menu, &LanguageMenu::chosen, &window,
                         [this](const QString& id) { chosen.append(id); });
        menu->openAt({window.mapToGlobal(QPoint(20, 20)), QSize(80, 20)});
        menu->setFocus();
        QApplication::processEvents();
    }
    void tellLanguages() {
        languages.languages(); // asks for them
        gate.set_value();
        isTold = true;
        EXPECT_TRUE(QTest::qWaitFor([&] { return runLoop.postedCount() > 0; }));
        runLoop.runPosted();
    }
    void press(Qt::Key key) { QTest::keyClick(QApplication::focusWidget(), key); }
    void type(const char* text) {
        QTest::keyClicks(QApplication::focusWidget(), QString::fromUtf8(text));
    }
    QStringList shown() const {
        const auto& list = *menu->findChild<QListWidget*>();
        QStringList result;
        for (int row = 0; row < list.count(); ++row) {
            auto text = list.item(row)->text();
            if (!list.item(row)->data(Qt::AccessibleDescriptionRole).isNull()) {
                text += QStringLiteral(" (chosen)");
            }
            result.append(row == list.currentRow() ? QLatin1Char('>') + text : text);
        }
        return result;
    }
    static QStringList texts(std::initializer_list<const char*> each) {
        QStringList result;
        for (const auto* const text : each) {
            result.append(QString::fromUtf8(text));
        }
        return result;
    }

    QWidget window;
    std::promise<void> gate;
    bool isTold = false;
    richtext::CodeHighlighter languages{
        [opened = gate.get_future().share()](std::stop_token) {
            return std::make_unique<LanguagesEngine>(opened);
        },
        [](std::string_view, std::string_view) { return std::optional<std::string_view>(""); },
        runLoop, log};
    QPointer<LanguageMenu> menu;
    QStringList chosen;
};

TEST_F(LanguageMenuTest, TheFirstTwoAreThereAtOnceAndTheOthersWhenTheyAreKnown) {
    open("cpp");
    EXPECT_EQ(shown(), texts({">Automatic", "Plain Text"}));
    press(Qt::Key_Down);
    tellLanguages();
    // What the user had come to is still what Return would choose.
    EXPECT_EQ(shown(), texts({"Automatic", ">Plain Text", "Bash", "C", "C#", "C++ (chosen)",
                              "Objective-C"}));
    press(Qt::Key_Return);
    EXPECT_EQ(chosen, texts({"plaintext"}));
}

TEST_F(LanguageMenuTest, TheChosenOneIsTickedAndTypingFindsTheBestFitFirst) {
    tellLanguages();
    open("cpp");
    EXPECT_EQ(shown(), texts({"Automatic", "Plain Text", "Bash", "C", "C#", ">C++ (chosen)",
                              "Objective-C"}));
    type("c");
    EXPECT_EQ(shown(), texts({">C", "C#", "C++ (chosen)", "Automatic", "Objective-C"}));
    type("++");
    EXPECT_EQ(shown(), texts({">C++ (chosen)"}));
    for (int i = 0; i < 3; ++i) {
        press(Qt::Key_Backspace);
    }
    type("csh"); // an identifier
    EXPECT_EQ(shown(), texts({">C#"}));
    press(Qt::Key_Return);
    EXPECT_EQ(chosen, texts({"csharp"}));
}

TEST_F(LanguageMenuTest, KeysWalkEscapeGivesUpAndAClickChooses) {
    tellLanguages();
    open("auto");
    press(Qt::Key_Down);
    press(Qt::Key_Down);
    press(Qt::Key_Up);
    EXPECT_EQ(shown().value(1), QStringLiteral(">Plain Text"));
    type("nothing like it");
    EXPECT_TRUE(shown().isEmpty());
    press(Qt::Key_Return);
    ASSERT_TRUE(menu) << "there is nothing to choose";
    press(Qt::Key_Escape);
    EXPECT_TRUE(chosen.isEmpty());

    open("auto");
    auto& list = *menu->findChild<QListWidget*>();
    QTest::mouseClick(list.viewport(), Qt::LeftButton, {},
                      list.visualItemRect(list.item(3)).center());
    EXPECT_EQ(chosen, texts({"c"}));
}

TEST_F(LanguageMenuTest, ATitleIsTheNameOnceItIsKnown) {
    EXPECT_EQ(LanguageMenu::titleOf(languages, QStringLiteral("auto")),
              QStringLiteral("Automatic"));
    EXPECT_EQ(LanguageMenu::titleOf(languages, QStringLiteral("cpp")), QStringLiteral("cpp"));
    tellLanguages();
    EXPECT_EQ(LanguageMenu::titleOf(languages, QStringLiteral("cpp")), QStringLiteral("C++"));
}

} // namespace
} // namespace korvex::ui
