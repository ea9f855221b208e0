#include "ui/windows/StoreErrorWindow.h"

#include "ui/kit/speech/Accessibility.h"

#include <QDesktopServices>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QUrl>

namespace korvex::ui {

namespace {

constexpr QSize kSize(560, 320);
constexpr int kMargin = 32;

} // namespace

StoreErrorWindow::StoreErrorWindow(const QString& message, const std::filesystem::path& storeFile) {
    setWindowTitle(QStringLiteral("Korvex"));
    Accessibility::setRole(*this, QAccessible::Window);
    resize(kSize);
    auto* const title = new QLabel(tr("Korvex could not open its store"), this);
    auto titleFont = title->font();
    titleFont.setPointSizeF(titleFont.pointSizeF() * 1.4);
    titleFont.setBold(true);
    title->setFont(titleFont);
    auto* const reason = new QLabel(message, this);
    const auto folder = QString::fromStdString(storeFile.parent_path().string());
    const auto hasFolder = QFileInfo(folder).isDir();
    auto* const advice = new QLabel(
        hasFolder ? tr("Nothing was changed. The store is the file below; keep a copy of its "
                       "folder before you try anything. When the cause is gone, start Korvex "
                       "again.")
                  : tr("Nothing was changed. The store is to be the file below. When the cause is "
                       "gone, start Korvex again."),
        this);
    const auto path = QString::fromStdString(storeFile.string());
    auto* const file = new QLabel(path, this);
    for (auto* const label : {title, reason, advice, file}) {
        label->setTextFormat(Qt::PlainText);
        label->setWordWrap(true);
        label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    }
    auto* const show = new QPushButton(tr("Show the folder"), this);
    show->setVisible(hasFolder);
    auto* const quit = new QPushButton(tr("Quit"), this);
    auto* const buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(show);
    buttons->addWidget(quit);
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
    column->setSpacing(14);
    for (auto* const label : {title, reason, advice, file}) {
        column->addWidget(label);
    }
    column->addStretch();
    column->addLayout(buttons);
    quit->setFocus();
    for (auto* const button : {show, quit}) {
        button->setAutoDefault(true);
    }
    connect(quit, &QPushButton::clicked, this, &QWidget::close);
    connect(show, &QPushButton::clicked, this,
            [folder] { QDesktopServices::openUrl(QUrl::fromLocalFile(folder)); });
}

} // namespace korvex::ui
