#pragma once

#include "app/StoreChangeChannel.h"

namespace korvex::platform::qt {

/// Sends the change signal over the session bus through QtDBus. Main thread.
class QtStoreChangeBroadcaster final : public app::StoreChangeBroadcaster {
public:
    void storeChanged(const std::filesystem::path& storeFile) override;
};

} // namespace korvex::platform::qt
