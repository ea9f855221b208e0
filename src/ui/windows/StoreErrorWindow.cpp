#include "ui/windows/StoreErrorWindow.h"

#include "ui/kit/speech/Accessibility.h"
#include "ui/kit/theme/IconSet.h"
#include "ui/kit/words/Text.h"

#include <QDesktopServices>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QUrl>

namespace korvex::ui {

namespace {

/// In pixels at the standard font size.
constexpr int kWidth = 560;
constexpr int kIconSize = 48;

} // namespace

StoreErrorWindow::StoreErrorWindow(const QString& program, const QString& message,
                                   const std::filesystem::path& storeFile, const Theme& theme,
                                   Which which) {
    setWindowTitle(program);
    Accessibility::setRole(*this, QAccessible::Window);
    const auto folder = toFileName(storeFile.parent_path());
    const auto hasFolder = QFileInfo(folder).isDir();
    auto* const sign = new QLabel(this);
    const auto size = theme.scaled(kIconSize);
    sign->setPixmap(IconSet::program().pixmap(QSize(size, size), devicePixelRatioF()));
    auto* const title = addWords(tr("Korvex could not open its store"), theme.titleFont());
    auto* const reason = addWords(message, theme.font());
    auto* const what = addWords(advice(which, hasFolder), theme.font());
    auto* const file = addWords(toFileName(storeFile), theme.smallFont());
    file->setForegroundRole(QPalette::PlaceholderText);
    auto* const show = new QPushButton(tr("Show the folder"), this);
    show->setVisible(hasFolder);
    auto* const again = new QPushButton(tr("Try again"), this);
    auto* const quit = new QPushButton(tr("Quit"), this);
    auto* const buttons = new QHBoxLayout;
    buttons->setSpacing(theme.space(Space::medium));
    buttons->addStretch();
    buttons->addWidget(show);
    buttons->addWidget(quit);
    buttons->addWidget(again);
    auto* const column = new QWidget(this);
    column->setMaximumWidth(theme.measure());
    auto* const words = new QVBoxLayout(column);
    words->setContentsMargins(0, 0, 0, 0);
    words->setSpacing(theme.space(Space::large));
    for (auto* const label : {title, reason, what, file}) {
        words->addWidget(label);
    }
    words->addStretch();
    words->addSpacing(theme.space(Space::medium));
    words->addLayout(buttons);
    auto* const line = new QHBoxLayout(this);
    const auto margin = theme.space(Space::vast);
    line->setContentsMargins(margin, margin, margin, theme.space(Space::wide));
    line->setSpacing(theme.space(Space::wide));
    line->addWidget(sign, 0, Qt::AlignTop);
    line->addWidget(column, 1);
    line->addStretch();
    const auto width = theme.scaled(kWidth);
    resize(width, line->heightForWidth(width));
    again->setDefault(true);
    again->setFocus();
    for (auto* const button : {show, quit}) {
        button->setAutoDefault(true);
    }
    connect(again, &QPushButton::clicked, this, &StoreErrorWindow::retryRequested);
    connect(quit, &QPushButton::clicked, this, &QWidget::close);
    connect(show, &QPushButton::clicked, this,
            [folder] { QDesktopServices::openUrl(QUrl::fromLocalFile(folder)); });
}

QString StoreErrorWindow::advice(Which which, bool hasFolder) {
    if (which == Which::legacy) {
        return tr("It is the store of an older Korvex, the file below. Move it away to start anew, "
                  "or try again when the cause is gone.");
    }
    return hasFolder
               ? tr("The store is the file below; keep a copy of its folder before you change "
                    "anything there. When the cause is gone, try again.")
               : tr("When the cause is gone, try again. Korvex expects its store here:");
}

QLabel* StoreErrorWindow::addWords(const QString& words, const QFont& font) {
    auto* const label = new QLabel(words, this);
    label->setFont(font);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    return label;
}

} // namespace korvex::ui
