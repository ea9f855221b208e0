#pragma once

#include "app/AppPreferences.h"
#include "app/FileUserDefaults.h"
#include "support/RecordingLog.h"
#include "support/TemporaryFolder.h"
#include "ui/kit/theme/Theme.h"
#include "ui/text/TextDocumentConversion.h"
#include "ui/text/TextLook.h"

#include <gtest/gtest.h>

namespace korvex::tests {

/// What it takes to show formatted text without a store.
class TextFixture : public ::testing::Test {
protected:
    ui::TextLook look() const { return ui::TextLook(theme); }

    RecordingLog log;
    TemporaryFolder folder;
    app::FileUserDefaults defaults{folder / "settings.json"};
    app::AppPreferences preferences{defaults, log};
    ui::Theme theme{preferences};
};

} // namespace korvex::tests
