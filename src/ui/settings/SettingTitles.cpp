#include "ui/settings/SettingTitles.h"

#include <QCoreApplication>

namespace korvex::ui {

namespace {

QString tr(const char* text) {
    return QCoreApplication::translate("korvex::ui::SettingTitles", text);
}

} // namespace

std::array<Titled<app::AppPreferences::Appearance>, 3> appearanceTitles() {
    using Appearance = app::AppPreferences::Appearance;
    return {{{Appearance::system, tr("System")},
             {Appearance::light, tr("Light")},
             {Appearance::dark, tr("Dark")}}};
}

std::array<Titled<app::AppPreferences::BoardSpacing>, 2> spacingTitles() {
    using Spacing = app::AppPreferences::BoardSpacing;
    return {{{Spacing::compact, tr("Compact")}, {Spacing::comfortable, tr("Comfortable")}}};
}

std::array<Titled<app::AppPreferences::LaunchDestination>, 3> destinationTitles() {
    using Destination = app::AppPreferences::LaunchDestination;
    return {{{Destination::lastBoard, tr("Last board")},
             {Destination::board, tr("Chosen board")},
             {Destination::upcoming, tr("Upcoming")}}};
}

std::array<Titled<model::EntryType>, 2> entryTypeTitles() {
    using model::EntryType;
    return {{{EntryType::todo, tr("Todos")}, {EntryType::text, tr("Text")}}};
}

} // namespace korvex::ui
