#pragma once

#include "app/AppPreferences.h"
#include "ui/kit/theme/Theme.h"

#include <QWidget>

class QScrollArea;

namespace korvex::ui {

/// Shows everything that the windows are made of, in every state, as it looks now; with controls
/// that change the look of all of it. For whoever works on the look. Main thread.
class GalleryWindow final : public QWidget {
    Q_OBJECT

public:
    /// Both outlive the window.
    GalleryWindow(app::AppPreferences& preferences, Theme& theme);

    /// In a window of this size nothing needs to be scrolled.
    QSize wholeSize() const;

private:
    QWidget* makeControls();
    /// Makes all samples anew, in the look that is now.
    void showSamples();

    app::AppPreferences& m_preferences;
    Theme& m_theme;
    QWidget* m_controls;
    QScrollArea* m_samples;
};

} // namespace korvex::ui
