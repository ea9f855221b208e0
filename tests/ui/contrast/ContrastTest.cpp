#include "ui/WindowFixture.h"
#include "ui/contrast/PictureContrast.h"
#include "ui/kit/overlays/ConfirmationSheet.h"
#include "ui/kit/style/QuietStyle.h"
#include "ui/windows/MainWindow.h"
#include "ui/windows/WindowContents.h"
#include "ui/windows/WindowScenes.h"

#include <QPainter>

#ifdef KORVEX_GALLERY
#include "ui/gallery/GalleryWindow.h"
#endif

#include <gmock/gmock.h>

namespace korvex::ui {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using tests::PictureContrast;

class ContrastTest : public tests::WindowFixture {
protected:
    using Appearance = app::AppPreferences::Appearance;
    using Contrast = Theme::SystemContrast;

    void measureAll(Appearance appearance, Contrast contrast) {
        const auto isHigh = contrast == Contrast::high;
        const PictureContrast::Limits limits{.text = isHigh ? 7 : 4.5, .marks = isHigh ? 4.5 : 3};
        preferences.setAppearance(appearance);
        theme.setSystem({.contrast = contrast, .motion = Theme::SystemMotion::still});
        tests::fillWindow(workspace);
        MainWindow window(workspace, theme);
        window.resize(960, 640);
        window.show();
        log.expectError("Quick Entry failed: "); // what a scene is of
        tests::WindowScenes scenes(window, workspace, theme, &quickEntry.system);
        for (const auto& scene : scenes.all()) {
            scenes.open(scene);
            // All else is quiet while one is asked.
            auto* const sheet = scenes.shown().findChild<ConfirmationSheet*>();
            const auto isAsked = sheet && sheet->isVisible();
            EXPECT_EQ(isAsked, scene.name.find("question") != std::string::npos);
            const PictureContrast measured(isAsked ? *sheet : scenes.shown(), limits);
            EXPECT_THAT(measured.faint(), IsEmpty()) << scene.name;
            const auto isSmall = scene.name.starts_with("quick-entry");
            EXPECT_GT(measured.texts(), isAsked ? 2 : isSmall ? 4 : 7) << scene.name;
            if (!isAsked) { // which has no marks
                EXPECT_GT(measured.marks(), isSmall ? 1 : 4) << scene.name;
            }
            auto* const menu = QApplication::activePopupWidget();
            EXPECT_EQ(menu != nullptr,
                      scene.name.starts_with("menu-") || scene.name == "completed-choice")
                << scene.name;
            if (menu) {
                const PictureContrast ofMenu(*menu, limits);
                EXPECT_THAT(ofMenu.faint(), IsEmpty()) << scene.name;
                EXPECT_GT(ofMenu.texts(), 3) << scene.name;
            }
            scenes.close();
        }
#ifdef KORVEX_GALLERY
        GalleryWindow gallery(preferences, theme); // every control in every state
        gallery.resize(gallery.wholeSize());
        gallery.show();
        QApplication::processEvents();
        const PictureContrast measured(gallery, limits);
        EXPECT_THAT(measured.faint(), IsEmpty()) << "gallery";
        EXPECT_GT(measured.texts(), 150);
        EXPECT_GT(measured.marks(), 60);
#endif
    }

private:
    InstalledStyle m_style{theme};
};

TEST_F(ContrastTest, InTheLight) {
    measureAll(Appearance::light, Contrast::usual);
}

TEST_F(ContrastTest, InTheDark) {
    measureAll(Appearance::dark, Contrast::usual);
}

TEST_F(ContrastTest, InTheLightWithMoreContrast) {
    measureAll(Appearance::light, Contrast::high);
}

TEST_F(ContrastTest, InTheDarkWithMoreContrast) {
    measureAll(Appearance::dark, Contrast::high);
}

/// Draws what pages draw, well and badly.
class Sample final : public QWidget {
public:
    QColor text = Qt::black;
    QColor circle = Qt::black;
    QColor bullet = Qt::black;
    bool isCovered = false;

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.fillRect(rect(), Qt::white);
        painter.setPen(text);
        painter.drawText(QRect(20, 10, 100, 20), Qt::AlignLeft, QStringLiteral("words"));
        painter.setPen(QColor(0xf0, 0xf0, 0xf0));
        painter.drawLine(0, 40, width(), 40); // parts only
        painter.setPen(circle);
        painter.drawEllipse(20, 50, 16, 16);
        painter.setPen(Qt::NoPen);
        painter.setBrush(bullet);
        painter.drawEllipse(60, 50, 6, 6);
        if (isCovered) {
            painter.fillRect(rect(), Qt::white);
        }
    }
};

TEST(PictureContrastTest, FindsWhatIsTooFaint) {
    Sample sample;
    sample.resize(140, 100);
    const auto faint = [&] { return PictureContrast(sample, {}).faint(); };
    EXPECT_THAT(faint(), IsEmpty());
    EXPECT_EQ(PictureContrast(sample, {}).texts(), 1);
    EXPECT_EQ(PictureContrast(sample, {}).marks(), 2);
    sample.text = QColor(0x80, 0x80, 0x80); // 3.95 to 1
    EXPECT_THAT(faint(), ElementsAre(HasSubstr("text “words”")));
    sample.circle = QColor(0xa0, 0xa0, 0xa0); // 2.61 to 1
    EXPECT_THAT(faint(), ElementsAre(HasSubstr(": 3.95 to 1"), HasSubstr("16 × 16: 2.6")));
    sample.bullet = QColor(0xb0, 0xb0, 0xb0);
    EXPECT_EQ(faint().size(), 3);
    sample.isCovered = true;
    EXPECT_THAT(faint(), IsEmpty()) << "nobody sees it";
    sample.isCovered = false;
    sample.setEnabled(false);
    EXPECT_THAT(faint(), IsEmpty()) << "nobody is to use it";
}

} // namespace
} // namespace korvex::ui
