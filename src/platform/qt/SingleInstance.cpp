#include "platform/qt/SingleInstance.h"

#include <QCryptographicHash>
#include <QLocalSocket>

namespace korvex::platform::qt {

namespace {

constexpr int kPatience = 500; // milliseconds
const QByteArray kRaise("raise\n");

} // namespace

SingleInstance::SingleInstance(const std::filesystem::path& dataDirectory) {
    std::error_code ignored;
    const auto folder = std::filesystem::weakly_canonical(dataDirectory, ignored);
    const auto digest = QCryptographicHash::hash(QByteArray::fromStdString(folder.string()),
                                                 QCryptographicHash::Sha256);
    m_name = QStringLiteral("korvex-%1").arg(QString::fromLatin1(digest.toHex().left(16)));
    const auto runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (!runtime.isEmpty()) {
        m_name = runtime + QLatin1Char('/') + m_name;
    } else {
        m_name += QStringLiteral("-%1").arg(qEnvironmentVariable("USER"));
    }
    m_server.setSocketOptions(QLocalServer::UserAccessOption);
    connect(&m_server, &QLocalServer::newConnection, this, [this] {
        while (auto* const socket = m_server.nextPendingConnection()) {
            connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
            connect(socket, &QLocalSocket::readyRead, this, [this, socket] {
                if (socket->readAll().startsWith(kRaise)) {
                    m_raiseRequested.emit();
                }
            });
        }
    });
}

bool SingleInstance::raiseRunning() const {
    QLocalSocket socket;
    socket.connectToServer(m_name);
    if (!socket.waitForConnected(kPatience)) {
        return false;
    }
    socket.write(kRaise);
    return socket.waitForBytesWritten(kPatience);
}

void SingleInstance::listen() {
    if (!m_server.listen(m_name)) {
        // Nobody answered there, so the socket is what a killed app has left.
        QLocalServer::removeServer(m_name);
        m_server.listen(m_name);
    }
}

} // namespace korvex::platform::qt
