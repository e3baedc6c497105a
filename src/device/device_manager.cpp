#include "device/device_manager.h"

#include <QDebug>

#include <algorithm>
#include <iterator>
#include <vector>

#include "core/configure.h"
#include "core/log.h"
#include "core/safe_name.h"
#include "device/device_closer.h"
#include "device/logging.h"
#include "device/tutk_device.h"
#include "link/av.h"
#include "link/iotc.h"
#include "link/result_codes.h"

using orvelle::kLogInfo;
using orvelle::log;

namespace {

constexpr int kCancelRepeatMs = 20;
constexpr int kMaxSearchRecords = 100;

std::atomic<KvDeviceManager*> s_instance{nullptr};

orvelle::CameraRecord recordOf(const LanSearchRecord& found) {
    orvelle::CameraRecord record;
    record.ip = QString::fromLatin1(found.ip);
    record.uid = QString::fromLatin1(found.uid);
    record.port = found.port;
    record.name = orvelle::safeName(QString::fromUtf8(found.deviceName));
    return record;
}

}  // namespace

KvDeviceManager::KvDeviceManager()
    : m_roundSignal(std::make_shared<orvelle::RoundSignal>()),
      m_fileWriter([this] {
          m_hasWriteFailed = true;
          emit writeFailed();
      }),
      m_entries([this](const QString& uid) { return findDevice(uid); }, m_fileWriter) {}

KvDeviceManager::~KvDeviceManager() {
    clearDevices();
}

KvDeviceManager* KvDeviceManager::create() {
    if (!s_instance)
        s_instance = new KvDeviceManager;
    return s_instance;
}

KvDeviceManager* KvDeviceManager::instance() {
    return s_instance;
}

void KvDeviceManager::release() {
    KvDeviceManager* manager = s_instance;
    if (!manager)
        return;
    manager->m_reaper.clear();
    manager->endInitThread();
    log("KvDeviceManager release clear devices began\n", kLogInfo);
    manager->clearDevices();
    log("KvDeviceManager release clear devices ended\n", kLogInfo);
    log("KvDeviceManager runInit uninit TUTK & IOTC\n", kLogInfo);
    log("KvDeviceManager runInit ended\n", kLogInfo);
    s_instance = nullptr;
    delete manager;
}

int KvDeviceManager::start(const QString& devicesPath) {
    if (!devicesPath.isEmpty())
        load(devicesPath);
    log("KvDeviceManager runInit began\n", kLogInfo);
    noteLink(startLink());
    log("KvDeviceManager runInit init IOTC & TUTK(32)\n", kLogInfo);
    launchInitThread();
    return 0;
}

int KvDeviceManager::startLink() {
    const int started = IOTC_Initialize2(0);
    const int channels = started < 0 ? started : avInitialize(kMaxDevices);
    return std::min(channels, 0);
}

void KvDeviceManager::noteLink(int result) {
    if (m_linkResult.exchange(result) == result)
        return;
    if (result < 0)
        qCWarning(lcDevice) << "no camera can be reached:" << orvelle::linkResultText(result);
    emit linkChanged();
}

void KvDeviceManager::load(const QString& devicesPath) {
    auto devices = KvTUTKDevice::loadAll(devicesPath + QStringLiteral("/KvTUTK"));
    addDevices({std::make_move_iterator(devices.begin()), std::make_move_iterator(devices.end())});
    for (const KvDevice* device : devicesSnapshot())
        nameMediaFolder(*device);
    m_entries.load(devicesPath + QStringLiteral("/KvTUTKGroup"), devicesSnapshot());
}

void KvDeviceManager::startInitThread() {
    log("Device Manager startInitThread began\n", kLogInfo);
    launchInitThread();
    log("Device Manager startInitThread ended\n", kLogInfo);
}

void KvDeviceManager::launchInitThread() {
    const std::lock_guard<std::mutex> lock(m_threadMutex);
    if (m_initThread || m_pauses > 0 || m_isClosedForGood)
        return;
    m_initThread = std::make_unique<KvDeviceManagerThread>(*this, m_roundSignal);
    m_initThread->start(QThread::InheritPriority);
}

void KvDeviceManager::connectSoon() {
    m_roundSignal->raise();
}

void KvDeviceManager::stopInitThread() {
    log("Device Manager stopInitThread began\n", kLogInfo);
    endInitThread();
    log("Device Manager stopInitThread ended\n", kLogInfo);
}

void KvDeviceManager::endInitThread() {
    log("KvDeviceManager release thread began\n", kLogInfo);
    std::unique_lock<std::mutex> lock(m_threadMutex);
    if (const auto thread = std::move(m_initThread)) {
        ++m_endingThreads;
        lock.unlock();
        thread->stop();
        // A cancel that comes just before an attempt begins is lost, hence the repetition.
        do
            m_attempts.cancel();
        while (!thread->waitForEnd(kCancelRepeatMs));
        lock.lock();
        --m_endingThreads;
        m_threadEnded.notify_all();
    }
    // Another caller may have taken the thread and still wait for its end.
    m_threadEnded.wait(lock, [this] { return m_endingThreads == 0; });
    lock.unlock();
    log("KvDeviceManager release thread ended\n", kLogInfo);
}

void KvDeviceManager::closeForGood() {
    {
        const std::lock_guard<std::mutex> deviceLock(m_devicesMutex);
        const std::lock_guard<std::mutex> lock(m_threadMutex);
        m_isClosedForGood = true;
    }
    stopInitThread();
    clearDevices();
}

QList<KvDevice*> KvDeviceManager::devicesSnapshot() const {
    const std::lock_guard<std::mutex> lock(m_listMutex);
    QList<KvDevice*> devices;
    for (const auto& device : m_devices)
        devices.append(device.get());
    return devices;
}

bool KvDeviceManager::contains(const KvDevice* device, bool lock) const {
    std::unique_lock<std::mutex> deviceLock(m_devicesMutex, std::defer_lock);
    if (lock)
        deviceLock.lock();
    const QList<KvDevice*> devices = devicesSnapshot();
    return std::any_of(devices.begin(), devices.end(),
                       [device](const KvDevice* listed) { return listed->equals(device); });
}

KvDevice* KvDeviceManager::findDevice(const QString& uid) const {
    const QList<KvDevice*> devices = devicesSnapshot();
    const auto found = std::find_if(devices.begin(), devices.end(), [&uid](const KvDevice* device) {
        return device->uid() == uid;
    });
    return found == devices.end() ? nullptr : *found;
}

std::optional<QString> KvDeviceManager::passwordOf(const QString& uid) const {
    const std::lock_guard<std::mutex> deviceLock(m_devicesMutex);
    const auto* device = qobject_cast<const KvTUTKDevice*>(findDevice(uid));
    return device ? std::make_optional(device->password()) : std::nullopt;
}

bool KvDeviceManager::addDevice(std::unique_ptr<KvDevice>&& device) {
    const std::lock_guard<std::mutex> deviceLock(m_devicesMutex);
    if (!device || m_isClosedForGood || contains(device.get(), false))
        return false;
    device->setFileWriter(&m_fileWriter);
    device->setSessionLostCallback([signal = m_roundSignal] { signal->raise(); });
    const std::lock_guard<std::mutex> lock(m_listMutex);
    m_devices.push_back(std::move(device));
    return true;
}

int KvDeviceManager::addDevices(std::vector<std::unique_ptr<KvDevice>> devices) {
    return static_cast<int>(std::count_if(devices.begin(), devices.end(), [this](auto& device) {
        return addDevice(std::move(device));
    }));
}

std::unique_ptr<KvDevice> KvDeviceManager::removeDevice(KvDevice* device) {
    const std::lock_guard<std::mutex> deviceLock(m_devicesMutex);
    std::unique_ptr<KvDevice> removed = takeListed(device);
    if (!removed)
        return nullptr;
    m_attempts.end(*removed);
    resolveMembers();
    removed->setSessionLostCallback({});
    return removed;
}

std::unique_ptr<KvDevice> KvDeviceManager::takeListed(const KvDevice* device) {
    const std::lock_guard<std::mutex> lock(m_listMutex);
    const auto found =
        std::find_if(m_devices.begin(), m_devices.end(),
                     [device](const auto& listed) { return listed.get() == device; });
    if (found == m_devices.end())
        return nullptr;
    std::unique_ptr<KvDevice> taken = std::move(*found);
    m_devices.erase(found);
    return taken;
}

void KvDeviceManager::clearDevices() {
    std::vector<std::unique_ptr<KvDevice>> devices;
    {
        const std::lock_guard<std::mutex> deviceLock(m_devicesMutex);
        const std::lock_guard<std::mutex> lock(m_listMutex);
        devices.swap(m_devices);
    }
    m_attempts.endAll();
    resolveMembers();
    orvelle::closeDevices(devices);
    devices.clear();
    log("KvDeviceManager clearDevices ended\n", kLogInfo);
}

QList<KvDeviceGroup*> KvDeviceManager::singleCameraGroups() const {
    QList<KvDeviceGroup*> singles;
    for (KvDeviceGroup* group : groups()) {
        if (group->type() == KvDeviceGroup::kSingleCamera)
            singles.append(group);
    }
    return singles;
}

int KvDeviceManager::getMaxGroupId() {
    const int id = KvConfigure().getInt(orvelle::settings::kGroupMaxId, 0);
    qDebug("getMaxGroupId %d", id);
    return id;
}

void KvDeviceManager::setMaxGroupId(int id) {
    qDebug("setMaxGroupId %d", id);
    KvConfigure().setInt(orvelle::settings::kGroupMaxId, id);
}

int KvDeviceManager::lanSearch(std::vector<orvelle::CameraRecord>& result, int timeoutMs,
                               const std::function<bool()>& isStopped) {
    IOTC_Initialize2(0);
    std::vector<LanSearchRecord> records(kMaxSearchRecords);
    const int found = IOTC_Lan_Search2(records.data(), kMaxSearchRecords, timeoutMs, isStopped);
    const int count = std::clamp(found, 0, kMaxSearchRecords);
    std::transform(records.begin(), records.begin() + count, std::back_inserter(result), recordOf);
    return count;
}
