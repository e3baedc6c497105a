#include "link/server/feeder_thread.h"

#include "link/clock.h"

#include <chrono>

namespace orvelle {

namespace {

constexpr std::chrono::milliseconds kRetryInterval{10};

}  // namespace

FeederThread::FeederThread(const ClientTable& clients)
    : KvThread(QStringLiteral("link-feeder")), m_clients(clients) {}

void FeederThread::run() {
    bool isSomethingLeft = false;
    while (waitForFrames(isSomethingLeft)) {
        isSomethingLeft = false;
        for (const auto& client : m_clients.all()) {
            for (const auto& channel : client->channels())
                isSomethingLeft = channel->feed(steadyMilliseconds()) || isSomethingLeft;
        }
    }
}

bool FeederThread::waitForFrames(bool isSomethingLeft) {
    std::unique_lock<std::mutex> lock(m_mutex);
    const auto hasWork = [this] { return m_hasFrames || isStopped(); };
    if (isSomethingLeft)
        m_framesCame.wait_for(lock, kRetryInterval, hasWork);
    else
        m_framesCame.wait(lock, hasWork);
    m_hasFrames = false;
    return !isStopped();
}

void FeederThread::stop() {
    KvThread::stop();
    std::lock_guard<std::mutex> lock(m_mutex);
    m_framesCame.notify_all();
}

void FeederThread::notify() {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_hasFrames = true;
    m_framesCame.notify_all();
}

}  // namespace orvelle
