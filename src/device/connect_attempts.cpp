#include "device/connect_attempts.h"

#include <algorithm>
#include <chrono>

#include "core/log.h"
#include "core/thread.h"
#include "device/device.h"

namespace orvelle {

namespace {

constexpr std::chrono::milliseconds kCancelRepeat{20};

}  // namespace

class ConnectAttempts::Attempt : public KvThread {
public:
    Attempt(ConnectAttempts& all, KvDevice& device)
        : KvThread(QStringLiteral("device-connect")), m_all(all), m_device(device) {}
    ~Attempt() override { waitForEnd(); }

    bool isUnderWayOn(const KvDevice* device) const {
        return !hasEnded && (!device || device == &m_device);
    }
    void cancel() { m_device.cancelInit(); }

    void run() override {
        const QByteArray uid = m_device.uid().toUtf8();
        log("KvDeviceManager runInit device (%s)\n", kLogInfo, uid.constData());
        m_device.ensureConnected();
        log("KvDeviceManager runInit device (%s) ended\n", kLogInfo, uid.constData());
        m_all.noteEnd(*this);
    }

    bool hasEnded = false;  ///< guarded by the owner's mutex; the device is not used any more

private:
    ConnectAttempts& m_all;
    KvDevice& m_device;
};

ConnectAttempts::ConnectAttempts() = default;

ConnectAttempts::~ConnectAttempts() {
    endAll();
}

bool ConnectAttempts::begin(KvDevice& device) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_attempts.erase(std::remove_if(m_attempts.begin(), m_attempts.end(),
                                    [](const auto& attempt) { return attempt->hasEnded; }),
                     m_attempts.end());
    if (isAnyUnderWay(&device))
        return true;
    if (m_attempts.size() >= kMaxAttempts)
        return false;
    m_attempts.push_back(std::make_unique<Attempt>(*this, device));
    m_attempts.back()->start();
    return true;
}

bool ConnectAttempts::isUnderWay(const KvDevice& device) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return isAnyUnderWay(&device);
}

bool ConnectAttempts::isAnyUnderWay(const KvDevice* device) const {
    return std::any_of(m_attempts.begin(), m_attempts.end(),
                       [device](const auto& attempt) { return attempt->isUnderWayOn(device); });
}

void ConnectAttempts::cancel() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    abort(nullptr);
}

void ConnectAttempts::abort(const KvDevice* device) {
    for (const auto& attempt : m_attempts) {
        if (!attempt->isUnderWayOn(device))
            continue;
        log("KvDeviceManager current device cancel init\n", kLogInfo);
        attempt->cancel();
    }
}

void ConnectAttempts::wait() {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait(lock, [this] { return !isAnyUnderWay(nullptr); });
}

void ConnectAttempts::endThoseOf(const KvDevice* device) {
    std::unique_lock<std::mutex> lock(m_mutex);
    // A cancel that comes just before an attempt begins is lost, hence the repetition.
    while (isAnyUnderWay(device)) {
        abort(device);
        m_changed.wait_for(lock, kCancelRepeat);
    }
}

void ConnectAttempts::noteEnd(Attempt& attempt) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    attempt.hasEnded = true;
    m_changed.notify_all();
}

}  // namespace orvelle
