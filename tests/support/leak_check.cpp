#include "support/leak_check.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEvent>
#include <QThread>

#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <thread>

namespace orvelle::test {
namespace {

namespace fs = std::filesystem;

// Beginnings of names, as the kernel cuts them.
constexpr std::array kForeignThreads = {
    "QDBusConnection", "QXcbEventQueue", "gmain",       "gdbus",      "dconf worker",
    "pool-",           "llvmpipe-",      "threaded-ml", "alsa-pulse", "Qt bearer"};
// Mesa's helpers carry the program's name before these.
constexpr std::array kMesaEndings = {":disk$", ":gl", ":cs", ":sh", ":gdrv"};

bool isForeign(const std::string& name) {
    return std::any_of(kForeignThreads.begin(), kForeignThreads.end(),
                       [&](const char* start) { return name.rfind(start, 0) == 0; }) ||
           std::any_of(kMesaEndings.begin(), kMesaEndings.end(),
                       [&](const char* ending) { return name.find(ending) != std::string::npos; });
}

std::map<int, std::string> ownThreads() {
    std::map<int, std::string> threads;
    std::error_code gone;
    for (const fs::directory_entry& task : fs::directory_iterator("/proc/self/task", gone)) {
        std::string name;
        std::ifstream comm(task.path() / "comm");
        // A thread may end while it is looked at.
        if (std::getline(comm, name) && !isForeign(name))
            threads[std::stoi(task.path().filename().string())] = name;
    }
    return threads;
}

bool isUnixSocket(int fd) {
    sockaddr_storage address = {};
    socklen_t size = sizeof address;
    return getsockname(fd, reinterpret_cast<sockaddr*>(&address), &size) == 0 &&
           address.ss_family == AF_UNIX;
}

std::set<std::string> openSockets() {
    std::set<std::string> sockets;
    std::error_code gone;
    for (const fs::directory_entry& entry : fs::directory_iterator("/proc/self/fd", gone)) {
        const std::string target = fs::read_symlink(entry.path(), gone).string();
        if (target.rfind("socket:", 0) == 0 &&
            !isUnixSocket(std::stoi(entry.path().filename().string())))
            sockets.insert(target);
    }
    return sockets;
}

}  // namespace

LeakCheck::LeakCheck() : m_sockets(openSockets()) {
    // With the first thread the thread sanitizer starts one of its own.
    std::thread([] {}).join();
    for (const auto& [id, name] : ownThreads())
        m_threads.insert(id);
}

int LeakCheck::leftovers(int timeoutMs) const {
    const QDeadlineTimer deadline(timeoutMs);
    std::set<std::string> left;
    do {
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        left.clear();
        for (const auto& [id, name] : ownThreads())
            if (m_threads.count(id) == 0)
                left.insert("thread " + name + " (" + std::to_string(id) + ")");
        for (const std::string& socket : openSockets())
            if (m_sockets.count(socket) == 0)
                left.insert(socket);
        if (left.empty())
            return 0;
        QThread::msleep(5);
    } while (!deadline.hasExpired());

    for (const std::string& what : left)
        std::fprintf(stderr, "LEAK: %s\n", what.c_str());
    return static_cast<int>(left.size());
}

}  // namespace orvelle::test
