#include "BusFixture.h"

#include "platform/bus/StoreChangeSignal.h"

#include <fstream>

namespace korvex::platform::bus {
namespace {

class StoreChangeSignalTest : public tests::BusFixture {
protected:
    Bus m_bus{WhichBus::session, m_loop, m_log};
    /// That of another program.
    Bus m_other{WhichBus::session, m_loop, m_log};
};

TEST_F(StoreChangeSignalTest, ChangesOfTheSameStoreAreHeardHoweverItIsCalled) {
    startDaemon();
    const auto store = m_folder / "Primary.store";
    std::ofstream(store).flush();
    std::filesystem::create_directory_symlink(m_folder.path(), m_folder / "link");
    StoreChangeListener listener(m_bus, store);
    int heard = 0;
    const auto counting = listener.changed().connect([&] { ++heard; });
    connect(m_bus);
    connect(m_other);
    settle(m_bus);
    EXPECT_TRUE(announceStoreChange(m_bus, store)) << "its own, of which it knows";
    EXPECT_TRUE(announceStoreChange(m_other, m_folder / "Other.store"));
    EXPECT_TRUE(announceStoreChange(m_other, store));
    EXPECT_TRUE(announceStoreChange(m_other, m_folder / "link" / "Primary.store"));
    // A path that another program chose is only text: looking there may take for ever.
    EXPECT_TRUE(m_other.emit({.path = app::kStoreChangedPath,
                              .interface = app::kStoreChangedInterface,
                              .member = app::kStoreChangedMember},
                             arguments((m_folder / "link" / "Primary.store").native())));
    settle(m_other);
    EXPECT_TRUE(m_loop.runUntil([&] { return heard >= 2; }));
    settle(m_bus);
    EXPECT_EQ(heard, 2);
}

} // namespace
} // namespace korvex::platform::bus
