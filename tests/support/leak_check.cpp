#include "support/leak_check.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEvent>
#include <QThread>

#include <cstdio>
#include <thread>

#include "support/process_probe.h"

namespace orvelle::test {

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
