#include "platform/qt/SingleInstance.h"

#include <QCryptographicHash>
#include <QDir>
#include <QSocketNotifier>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <string_view>
#include <thread>

namespace korvex::platform::qt {

namespace {

constexpr std::chrono::microseconds kPatience{500'000};
constexpr std::chrono::milliseconds kBetweenTries{1};
constexpr const char* kLockExtension = ".lock";
constexpr std::string_view kRaise = "raise";

/// Each request is a datagram of its own: there is no connection to look after.
base::FileDescriptor makeSocket(int flags) {
    return base::FileDescriptor(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | flags, 0));
}

/// Connects or binds the socket. False for a name that is too long for one.
bool apply(int (*operation)(int, const sockaddr*, socklen_t), const base::FileDescriptor& socket,
           const std::filesystem::path& file) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const auto& name = file.native();
    if (name.size() >= sizeof address.sun_path) {
        return false;
    }
    std::memcpy(address.sun_path, name.c_str(), name.size() + 1);
    return operation(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) ==
           0;
}

} // namespace

SingleInstance::SingleInstance(const std::filesystem::path& dataDirectory) {
    std::error_code ignored;
    const auto folder = std::filesystem::weakly_canonical(dataDirectory, ignored);
    const auto digest = QCryptographicHash::hash(QByteArray::fromStdString(folder.string()),
                                                 QCryptographicHash::Sha256);
    const auto name = "korvex-" + digest.toHex().left(16).toStdString();
    const auto runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (!runtime.isEmpty()) {
        m_file = std::filesystem::path(runtime.toStdString()) / name;
    } else {
        // The folder is everybody's.
        m_file = std::filesystem::path(QDir::tempPath().toStdString()) /
                 (name + "-" + qEnvironmentVariable("USER").toStdString());
    }
}

SingleInstance::~SingleInstance() {
    close();
}

void SingleInstance::close() {
    // Where nothing can be locked another one may have taken the name.
    if (m_socket.isOpen() && fileThere() == m_own) {
        ::unlink(m_file.c_str());
    }
    m_notifier.reset();
    m_socket = {};
    m_lock.reset();
}

std::pair<dev_t, ino_t> SingleInstance::fileThere() const {
    struct stat status {};
    ::lstat(m_file.c_str(), &status);
    return {status.st_dev, status.st_ino};
}

bool SingleInstance::raiseRunning() {
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    auto answer = askRunning();
    // Who has the name without a socket starts or ends at this moment.
    while (answer == Answer::nobodyThere && !takeName() &&
           std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(kBetweenTries);
        answer = askRunning();
    }
    return answer == Answer::given;
}

SingleInstance::Answer SingleInstance::askRunning() const {
    const auto socket = makeSocket(0);
    const timeval patience{.tv_sec = 0, .tv_usec = kPatience.count()};
    ::setsockopt(socket.get(), SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
    if (!apply(::connect, socket, m_file)) {
        return Answer::nobodyThere;
    }
    return ::send(socket.get(), kRaise.data(), kRaise.size(), MSG_NOSIGNAL) ==
                   static_cast<ssize_t>(kRaise.size())
               ? Answer::given
               : Answer::none;
}

bool SingleInstance::takeName() {
    auto beside = m_file;
    base::FileLock lock(beside += kLockExtension, std::chrono::milliseconds::zero());
    if (lock.state() == base::FileLock::State::taken) {
        return false;
    }
    m_lock.emplace(std::move(lock));
    ::unlink(m_file.c_str()); // what a killed one has left: nobody answered there
    auto socket = makeSocket(SOCK_NONBLOCK);
    ::fchmod(socket.get(), S_IRUSR | S_IWUSR); // what the file will have
    if (apply(::bind, socket, m_file)) {       // else later starts open windows of their own
        m_own = fileThere();
        m_socket = std::move(socket);
    }
    return true;
}

void SingleInstance::listen() {
    if (m_socket.isOpen()) {
        m_notifier = std::make_unique<QSocketNotifier>(m_socket.get(), QSocketNotifier::Read);
        connect(m_notifier.get(), &QSocketNotifier::activated, this, &SingleInstance::takeRequests);
    }
}

void SingleInstance::takeRequests() {
    char request[kRaise.size()];
    for (ssize_t size = 0;
         (size = ::recv(m_socket.get(), request, sizeof request, MSG_DONTWAIT)) >= 0;) {
        if (std::string_view(request, static_cast<std::size_t>(size)) == kRaise) {
            m_raiseRequested.emit();
        }
    }
}

} // namespace korvex::platform::qt
