#include "app/WidgetFile.h"

#include "support/RecordingLog.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <fstream>
#include <iterator>

namespace korvex::app {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class WidgetFileTest : public ::testing::Test {
protected:
    void put(const std::string& contents) const { std::ofstream(path) << contents; }
    std::string contents(const std::filesystem::path& of) const {
        std::ifstream stream(of);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    tests::TemporaryFolder folder;
    std::filesystem::path path = folder / "korvex" / "widgets.json";
    std::filesystem::path damaged = folder / "korvex" / "widgets.json.damaged";
    WidgetFile file{path};
    tests::RecordingLog log;
};

TEST_F(WidgetFileTest, WhatIsWrittenIsReadAndNothingIsThereBefore) {
    EXPECT_THAT(file.read(log), IsEmpty());
    EXPECT_FALSE(std::filesystem::exists(path.parent_path()));
    const std::vector<RememberedWidget> widgets{
        {.x = -1200, .y = 30, .width = 300, .height = 360},
        {.board = base::Uuid::random(), .isBelow = false},
    };
    ASSERT_EQ(file.write(widgets), std::error_code());
    EXPECT_EQ(file.read(log), widgets);
    ASSERT_EQ(file.write({}), std::error_code());
    EXPECT_THAT(file.read(log), IsEmpty());
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(WidgetFileTest, ADamagedFileIsKeptAsideAndALaterOneTakesItsPlace) {
    std::filesystem::create_directory(path.parent_path());
    for (const auto* const text :
         {"", "[]", "{", "{\"version\":2,\"widgets\":[]}", "{\"version\":1}",
          "{\"version\":1,\"widgets\":{}}", "\xff\xfe"}) {
        put(text);
        EXPECT_THAT(file.read(log), IsEmpty()) << text;
        EXPECT_FALSE(std::filesystem::exists(path)) << text;
        EXPECT_EQ(contents(damaged), text);
    }
    put(std::string(100'000, '['));
    EXPECT_THAT(file.read(log), IsEmpty());
    EXPECT_EQ(log.count("is damaged"), 8U);
    ASSERT_EQ(file.write({{}}), std::error_code());
    EXPECT_THAT(file.read(log), ElementsAre(RememberedWidget{}));
}

TEST_F(WidgetFileTest, WhatIsOutOfBoundsIsLeftAside) {
    std::filesystem::create_directory(path.parent_path());
    put(R"({"version": 1, "widgets": [
        {"x": 5, "y": 6, "width": 0, "height": 10},
        {"x": 5, "y": 6000000, "width": 20, "height": 10, "below": false},
        {"x": 5.5, "y": 6, "width": 20, "height": 10, "below": "no"},
        {"board": "nobody"}, {"board": 7}, 8, [],
        {"x": 5, "y": 6, "width": 20, "height": 10, "later": "added"}]})");
    EXPECT_THAT(file.read(log),
                ElementsAre(RememberedWidget{}, RememberedWidget{.isBelow = false},
                            RememberedWidget{},
                            RememberedWidget{.x = 5, .y = 6, .width = 20, .height = 10}));
    std::string many = "{\"version\":1,\"widgets\":[{}";
    for (int i = 0; i < 100; ++i) {
        many += ",{}";
    }
    put(many + "]}");
    EXPECT_EQ(file.read(log).size(), WidgetFile::kMostWidgets);
}

} // namespace
} // namespace korvex::app
