#pragma once

#include "ui/kit/theme/Theme.h"

#include <QWidget>

#include <filesystem>

class QLabel;

namespace korvex::ui {

/// Stands in for the main window when the store could not be opened: says why and what to do.
class StoreErrorWindow final : public QWidget {
    Q_OBJECT

public:
    /// `legacy`: the store of an older Korvex, which cannot be taken over.
    enum class Which { own, legacy };
    /// `program` is its title.
    StoreErrorWindow(const QString& program, const QString& message,
                     const std::filesystem::path& storeFile, const Theme& theme,
                     Which which = Which::own);

Q_SIGNALS:
    /// The store is to be opened once more.
    void retryRequested();

private:
    static QString advice(Which which, bool hasFolder);
    QLabel* addWords(const QString& words, const QFont& font);
};

} // namespace korvex::ui
