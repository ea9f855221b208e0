#pragma once

#include "app/AppPreferences.h"

#include <QString>
#include <QStringList>

#include <algorithm>
#include <array>

namespace korvex::ui {

/// A value of a setting and how it is called, wherever it can be chosen.
template <typename Value>
struct Titled {
    Value value;
    QString title;
};

/// In the order in which they are offered.
std::array<Titled<app::AppPreferences::Appearance>, 3> appearanceTitles();
std::array<Titled<app::AppPreferences::BoardSpacing>, 2> spacingTitles();
std::array<Titled<app::AppPreferences::LaunchDestination>, 3> destinationTitles();
std::array<Titled<model::EntryType>, 2> entryTypeTitles();

template <typename All>
QStringList titlesOf(const All& all) {
    QStringList titles;
    for (const auto& each : all) {
        titles.append(each.title);
    }
    return titles;
}

/// Its place among all, each of which is there.
template <typename All, typename Value>
int placeOf(const All& all, Value value) {
    return static_cast<int>(std::find_if(all.begin(), all.end(),
                                         [&](const auto& each) { return each.value == value; }) -
                            all.begin());
}

} // namespace korvex::ui
