#include "ui/gallery/GalleryWindow.h"

#include "ui/gallery/ControlSamples.h"
#include "ui/gallery/DesignSamples.h"
#include "ui/gallery/FieldSamples.h"
#include "ui/gallery/PanelSamples.h"
#include "ui/kit/controls/ListChoice.h"
#include "ui/kit/controls/SegmentedChoice.h"
#include "ui/kit/controls/Switch.h"

#include <QApplication>
#include <QComboBox>
#include <QHBoxLayout>
#include <QScrollArea>

#include <algorithm>

namespace korvex::ui {

namespace {

using Appearance = app::AppPreferences::Appearance;

} // namespace

GalleryWindow::GalleryWindow(app::AppPreferences& preferences, Theme& theme)
    : m_preferences(preferences),
      m_theme(theme),
      m_controls(makeControls()),
      m_samples(new QScrollArea(this)) {
    setWindowTitle(QStringLiteral("Gallery"));
    m_samples->setFrameShape(QFrame::NoFrame);
    m_samples->setWidgetResizable(true);
    auto* const column = new QVBoxLayout(this);
    column->addWidget(m_controls);
    column->addWidget(m_samples, 1);
    // Whoever changed the look may be a control of this window: it is let finish first.
    connect(&theme, &Theme::changed, this, &GalleryWindow::showSamples, Qt::QueuedConnection);
    showSamples();
}

QSize GalleryWindow::wholeSize() const {
    const auto controls = m_controls->sizeHint();
    const auto samples = m_samples->widget()->sizeHint();
    const auto around = layout()->contentsMargins();
    const QSize whole(std::max(controls.width(), samples.width()),
                      controls.height() + layout()->spacing() + samples.height());
    return whole.grownBy(around);
}

QWidget* GalleryWindow::makeControls() {
    auto* const bar = new QWidget(this);
    auto* const row = new QHBoxLayout(bar);
    row->setContentsMargins(0, 0, 0, 0);
    auto* const appearance = new SegmentedChoice(
        QStringLiteral("Appearance"),
        {QStringLiteral("System"), QStringLiteral("Light"), QStringLiteral("Dark")}, m_theme);
    appearance->choose(static_cast<int>(m_preferences.appearance()));
    connect(appearance, &SegmentedChoice::chosenChanged, this,
            [this](int index) { m_preferences.setAppearance(static_cast<Appearance>(index)); });
    auto* const contrast = new Switch(QStringLiteral("High contrast"), m_theme);
    contrast->setChecked(m_theme.colors().isHighContrast);
    connect(contrast, &Switch::toggled, this, [this](bool isHigh) {
        auto system = m_theme.system();
        system.contrast = isHigh ? Theme::SystemContrast::high : Theme::SystemContrast::usual;
        m_theme.setSystem(system);
    });
    auto* const still = new Switch(QStringLiteral("Still"), m_theme);
    still->setChecked(m_theme.motion(Motion::calm) == 0);
    connect(still, &Switch::toggled, this, [this](bool isStill) {
        auto system = m_theme.system();
        system.motion = isStill ? Theme::SystemMotion::still : Theme::SystemMotion::usual;
        m_theme.setSystem(system);
    });
    auto* const mirrored = new Switch(QStringLiteral("Right to left"), m_theme);
    mirrored->setChecked(QApplication::isRightToLeft());
    connect(mirrored, &Switch::toggled, this, [this](bool isMirrored) {
        QApplication::setLayoutDirection(isMirrored ? Qt::RightToLeft : Qt::LeftToRight);
        showSamples();
    });
    auto* const size = new ListChoice;
    size->setAccessibleName(QStringLiteral("Font size"));
    for (const auto each : app::AppPreferences::kFontSizes) {
        size->addItem(QString::number(each), each);
    }
    size->setCurrentIndex(size->findData(m_preferences.fontSize()));
    connect(size, &QComboBox::currentIndexChanged, this,
            [this, size] { m_preferences.setFontSize(size->currentData().toInt()); });
    for (auto* const control :
         std::initializer_list<QWidget*>{appearance, size, contrast, still, mirrored}) {
        row->addWidget(control);
    }
    row->addStretch();
    return bar;
}

void GalleryWindow::showSamples() {
    auto* const samples = new QWidget;
    auto* const columns = new QHBoxLayout(samples);
    columns->setSpacing(m_theme.space(Space::vast));
    columns->addWidget(makeControlSamples(m_theme, samples), 0, Qt::AlignTop);
    auto* const right = new QVBoxLayout;
    right->addWidget(makePanelSamples(m_theme, samples));
    right->addWidget(makeFieldSamples(m_theme, samples));
    right->addWidget(new DesignSamples(m_theme, samples));
    right->addStretch();
    columns->addLayout(right, 1);
    m_samples->setWidget(samples); // and deletes the former ones
}

} // namespace korvex::ui
