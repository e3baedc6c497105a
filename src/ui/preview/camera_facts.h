#pragma once

#include <QObject>

#include <atomic>

class KvTUTKDevice;
class KvTUTKResponse;

namespace orvelle {

/// What a camera says about itself as far as a tile shows it: firmware version, quality of its
/// stream and whether it can be turned. Interface thread; answers come on the device's thread.
class CameraFacts : public QObject {
    Q_OBJECT

public:
    explicit CameraFacts(QObject* parent = nullptr);
    ~CameraFacts() override;

    /// Borrowed; null for none. What was known of the former one is forgotten.
    void setDevice(KvTUTKDevice* device);
    /// Asks for all of it. With every new start: a request may be lost, and a camera restarted.
    void request();
    /// What its type is, last heard or remembered.
    bool isTurnable() const;

signals:
    /// Raised on the device's thread, both.
    void qualityChanged(int quality, int version);
    void typeChanged();

private:
    static void onResponse(void* user, KvTUTKResponse* response);
    void handleResponse(const KvTUTKResponse& response);

    KvTUTKDevice* m_device = nullptr;
    std::atomic<int> m_version{0};
    std::atomic<int> m_type{0};
};

}  // namespace orvelle
