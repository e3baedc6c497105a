#pragma once

#include <atomic>
#include <memory>
#include <utility>

#include "device/device.h"
#include "device/device_group.h"

namespace orvelle::test {

/// A camera without a link, in whatever state a test wants.
class FakeDevice : public KvDevice {
public:
    explicit FakeDevice(QString uid, State state = State::kOnline)
        : m_uid(std::move(uid)), m_state(state) {}

    void setState(State state) { m_state = state; }

    int type() const override { return 1; }
    int ensureConnected() override { return -1; }
    int init() override { return -1; }
    void uninit() override {}
    void noteNotFound(int /*result*/) override {}
    void cancelInit() override {}
    bool isWorking() const override { return m_state == State::kOnline; }
    bool isConnected() const override { return m_state == State::kOnline; }
    QString displayName() const override { return m_uid; }
    QString uid() const override { return m_uid; }
    KvBasePlayerInput* createInput() override { return nullptr; }
    void requestStop() override {}
    void setSessionLostCallback(std::function<void()> /*callback*/) override {}
    State state() const override { return m_state; }
    int lastResult() const override { return 0; }

private:
    const QString m_uid;
    std::atomic<State> m_state;
};

inline std::unique_ptr<KvDeviceGroup> entryOf(KvDevice& device, const QString& name) {
    auto entry = std::make_unique<KvDeviceGroup>(&device);
    entry->setName(name);
    return entry;
}

inline std::unique_ptr<KvDeviceGroup> groupOf(const QList<KvDevice*>& devices,
                                              const QString& name) {
    auto group = std::make_unique<KvDeviceGroup>();
    group->setType(KvDeviceGroup::kGroup);
    group->setName(name);
    group->setDevices(devices);
    return group;
}

}  // namespace orvelle::test
