#include "platform/qt/QtStoreChangeBroadcaster.h"

#include <QDBusConnection>
#include <QDBusMessage>

namespace korvex::platform::qt {

void QtStoreChangeBroadcaster::storeChanged(const std::filesystem::path& storeFile) {
    auto bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        return;
    }
    auto message = QDBusMessage::createSignal(QString::fromLatin1(app::kStoreChangedPath),
                                              QString::fromLatin1(app::kStoreChangedInterface),
                                              QString::fromLatin1(app::kStoreChangedMember));
    message << QString::fromStdString(storeFile.string());
    bus.send(message);
}

} // namespace korvex::platform::qt
