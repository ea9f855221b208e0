#pragma once

#include <string>

class QCoreApplication;

namespace korvex::ui {

/// Lets all that the windows show speak one language by one clock: the language of the texts, in
/// the user's region. To be called once, before the first window. Returns the locale for dates and
/// times.
std::string setUpLanguage(QCoreApplication& application);

} // namespace korvex::ui
