#include "app/QuickEntryRequest.h"

#include <gtest/gtest.h>

namespace korvex::app {
namespace {

TEST(QuickEntryRequest, IsWhatItsLaunchAsksForAsFarAsThatIsUnderstood) {
    const auto board = base::Uuid::random();
    for (const auto& request : {QuickEntryRequest{}, QuickEntryRequest{.board = board},
                                QuickEntryRequest{.board = board, .type = model::EntryType::todo},
                                QuickEntryRequest{.type = model::EntryType::text}}) {
        const auto launch = request.launch();
        EXPECT_EQ(launch.action, kQuickEntryAction);
        EXPECT_EQ(QuickEntryRequest::of(*Launch::decode(launch.encoded())), request);
    }
    const Launch later{
        .parameters = {"board=Work", "type=note", "type", "color=red", "type=text "}};
    EXPECT_EQ(QuickEntryRequest::of(later), QuickEntryRequest{});
}

} // namespace
} // namespace korvex::app
