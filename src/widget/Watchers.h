#pragma once

#include "app/AppPreferences.h"
#include "base/RunLoop.h"
#include "platform/bus/Bus.h"
#include "ui/kit/theme/Theme.h"
#include "ui/widget/WidgetStore.h"
#include "ui/workspace/DateTexts.h"

#include <filesystem>
#include <memory>
#include <vector>

namespace korvex::widget {

/// Listens to what comes from outside: other programs, the clock and the time zone, the settings,
/// the desktop's appearance. Main thread.
class Watchers final {
public:
    /// What is told of changes; all of it outlives the watchers.
    struct Listeners {
        std::filesystem::path storeFile;
        ui::WidgetStore& store;
        ui::DateTexts& dates;
        ui::Theme& theme;
        app::AppPreferences& preferences;
        platform::bus::Bus& bus;
        base::RunLoop& runLoop;
    };
    explicit Watchers(const Listeners& listeners);
    ~Watchers();
    Watchers(const Watchers&) = delete;
    Watchers& operator=(const Watchers&) = delete;

private:
    struct Sources;

    std::unique_ptr<Sources> m_sources;
    std::vector<base::Subscription> m_subscriptions;
};

} // namespace korvex::widget
