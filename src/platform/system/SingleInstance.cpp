#include "platform/system/SingleInstance.h"

#include "base/Digest.h"
#include "base/EnvironmentVariable.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace korvex::platform::system {

namespace {

/// How long a running app may leave a full socket as it is before it is taken for one that hangs.
/// Another start that is just about to take the place needs much less.
constexpr std::chrono::microseconds kPatience{500'000};
constexpr std::chrono::milliseconds kBetweenTries{1};
constexpr std::size_t kLongestMessage = std::size_t{64} * 1024;

/// Each launch is a datagram of its own: there is no connection to look after.
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

std::string nameOf(const std::filesystem::path& dataDirectory) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    constexpr std::size_t kBytes = 8;
    std::error_code ignored;
    const auto folder = std::filesystem::weakly_canonical(dataDirectory, ignored);
    const auto digest = base::sha256(folder.native());
    std::string name = "korvex-";
    for (std::size_t i = 0; i < kBytes; ++i) {
        name += {kDigits[digest[i] / 16U], kDigits[digest[i] % 16U]};
    }
    return name;
}

} // namespace

SingleInstance::SingleInstance(const std::filesystem::path& dataDirectory) {
    const auto name = nameOf(dataDirectory);
    if (const auto runtime = base::environmentVariable("XDG_RUNTIME_DIR")) {
        m_file = std::filesystem::path(*runtime) / name;
    } else {
        // The folder is everybody's.
        std::error_code ignored;
        m_file = std::filesystem::temp_directory_path(ignored) /
                 (name + "-" + base::environmentVariable("USER").value_or(""));
    }
}

SingleInstance::~SingleInstance() {
    close();
}

void SingleInstance::close() {
    // Where nothing can be locked another one may have taken the place.
    if (m_socket.isOpen() && fileThere() == m_own) {
        ::unlink(m_file.c_str());
    }
    m_watch.reset();
    m_socket = {};
    m_lock.reset();
}

std::pair<dev_t, ino_t> SingleInstance::fileThere() const {
    struct stat status {};
    ::lstat(m_file.c_str(), &status);
    return {status.st_dev, status.st_ino};
}

bool SingleInstance::handOver(const app::Launch& launch) {
    auto message = launch.encoded();
    if (message.size() > kLongestMessage) {
        message = app::Launch{}.encoded(); // it comes forward at least
    }
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    auto answer = send(message);
    // Who has the place without a socket starts or ends at this moment.
    while (answer == Answer::nobodyThere && !takePlace() &&
           std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(kBetweenTries);
        answer = send(message);
    }
    return answer == Answer::taken;
}

bool SingleInstance::isOurs() const {
    struct stat status {};
    return ::lstat(m_file.c_str(), &status) == 0 && S_ISSOCK(status.st_mode) &&
           status.st_uid == ::geteuid();
}

SingleInstance::Answer SingleInstance::send(const std::string& message) const {
    if (!isOurs()) {
        return Answer::nobodyThere;
    }
    const auto socket = makeSocket(0);
    const timeval patience{.tv_sec = 0, .tv_usec = kPatience.count()};
    ::setsockopt(socket.get(), SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
    if (!apply(::connect, socket, m_file)) {
        return Answer::nobodyThere;
    }
    return ::send(socket.get(), message.data(), message.size(), MSG_NOSIGNAL) ==
                   static_cast<ssize_t>(message.size())
               ? Answer::taken
               : Answer::none;
}

bool SingleInstance::takePlace() {
    base::FileLock lock(std::filesystem::path(m_file.native() + ".lock"),
                        std::chrono::milliseconds::zero());
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

void SingleInstance::listen(base::RunLoop& runLoop) {
    if (m_socket.isOpen()) {
        m_watch = runLoop.watch(m_socket.get(), base::RunLoop::Interest::reading,
                                [this] { takeLaunches(); });
    }
}

void SingleInstance::takeLaunches() {
    std::vector<char> message(kLongestMessage);
    std::vector<app::Launch> launches;
    for (ssize_t size = 0; (size = ::recv(m_socket.get(), message.data(), message.size(),
                                          MSG_DONTWAIT | MSG_TRUNC)) >= 0;) {
        const auto length = static_cast<std::size_t>(size);
        auto launch = length <= message.size()
                          ? app::Launch::decode(std::string_view(message.data(), length))
                          : std::nullopt;
        if (launch) {
            launches.push_back(*std::move(launch));
        }
    }
    for (const auto& launch : launches) {
        m_launched.emit(launch);
    }
}

} // namespace korvex::platform::system
