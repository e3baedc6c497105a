#include "ui/preview/camera_facts.h"

#include "device/device_messages.h"
#include "device/tutk_device.h"
#include "device/tutk_request.h"

namespace orvelle {

namespace {

constexpr int kTurnableType = 1;

}  // namespace

CameraFacts::CameraFacts(QObject* parent) : QObject(parent) {}

CameraFacts::~CameraFacts() {
    setDevice(nullptr);
}

void CameraFacts::setDevice(KvTUTKDevice* device) {
    if (m_device)
        m_device->removeListener(this);
    m_device = device;
    m_version = 0;
    m_type = device ? device->mode() : 0;
    if (device)
        device->addListener(this, onResponse);
}

void CameraFacts::request() {
    if (!m_device)
        return;
    for (const IoType type : {IOTYPE_USER_IPCAM_GET_DEVICE_TYPE_REQ, IOTYPE_USER_IPCAM_DEVINFO_REQ,
                              IOTYPE_USER_IPCAM_GETSTREAMCTRL_REQ})
        m_device->sendIOCtrl(type);
}

bool CameraFacts::isTurnable() const {
    return m_type == kTurnableType;
}

void CameraFacts::onResponse(void* user, KvTUTKResponse* response) {
    static_cast<CameraFacts*>(user)->handleResponse(*response);
}

void CameraFacts::handleResponse(const KvTUTKResponse& response) {
    switch (response.type()) {
        case IOTYPE_USER_IPCAM_GETSTREAMCTRL_RESP:
            if (const auto quality = StreamQualityReply::decode(response.data()).quality) {
                qDebug("resp->quality = %d, version = %d", *quality, m_version.load());
                emit qualityChanged(*quality, m_version);
            }
            break;
        case IOTYPE_USER_IPCAM_DEVINFO_RESP:
            if (const auto version = SMsgAVIoctrlDeviceInfoResp::decode(response.data()).version) {
                m_version = static_cast<int>(*version);
                qDebug("version = %d", m_version.load());
            }
            break;
        case IOTYPE_USER_IPCAM_GET_DEVICE_TYPE_RESP:
            if (const auto type = DeviceTypeReply::decode(response.data()).type) {
                m_type = *type;
                qDebug("device type = %d", *type);
                emit typeChanged();
            }
            break;
        default:
            break;
    }
}

}  // namespace orvelle
