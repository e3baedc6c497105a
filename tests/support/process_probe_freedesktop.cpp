#include "support/process_probe.h"

#include <QFile>

#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>

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

bool isUnixSocket(int fd) {
    sockaddr_storage address = {};
    socklen_t size = sizeof address;
    return getsockname(fd, reinterpret_cast<sockaddr*>(&address), &size) == 0 &&
           address.ss_family == AF_UNIX;
}

}  // namespace

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

double cpuSecondsOf(int64_t process) {
    QFile file(QStringLiteral("/proc/%1/stat").arg(process));
    if (!file.open(QIODevice::ReadOnly))
        return 0.0;
    // Fields 14 and 15, counted from behind the name, which may hold blanks.
    const QByteArray stat = file.readAll();
    const QList<QByteArray> fields = stat.mid(stat.lastIndexOf(')') + 2).split(' ');
    const double ticks = fields.value(11).toDouble() + fields.value(12).toDouble();
    return ticks / static_cast<double>(sysconf(_SC_CLK_TCK));
}

double residentMibOf(int64_t process) {
    QFile file(QStringLiteral("/proc/%1/statm").arg(process));
    if (!file.open(QIODevice::ReadOnly))
        return 0.0;
    const double pages = file.readAll().split(' ').value(1).toDouble();
    return pages * static_cast<double>(sysconf(_SC_PAGESIZE)) / (1024.0 * 1024.0);
}

}  // namespace orvelle::test
