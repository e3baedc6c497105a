#include "device/device_messages.h"
#include "device/tutk_request.h"
#include "media/live/device_player.h"
#include "platform/private_file.h"
#include "render/video_surface.h"
#include "ui/logging.h"
#include "ui/preview/device_player_view.h"

// What runs on the player's and the device's threads.

namespace {

constexpr int kSpeedIntervalMs = 1000;

}  // namespace

int32_t KvDevicePlayerView::onPlayerEvent(void* user, int32_t event, double, double) {
    static_cast<KvDevicePlayerView*>(user)->handlePlayerEvent(event);
    return 0;
}

void KvDevicePlayerView::handlePlayerEvent(int32_t event) {
    switch (event) {
        case KvBasePlayerOpenFailed:
            qDebug("KvBasePlayerOpenFailed");
            m_openFailed = true;
            emit startCheckSignal();
            break;
        case KvBasePlayerFirstFrame:
            m_lastPictureMs = nowMs();
            m_firstPicture = true;
            emit hideLoadingSignal();
            writeThumbnail();
            break;
        case KvBasePlayerPlayEnded:
            qDebug("KvBasePlayerPlayEnded");
            break;
        case KvBasePlayerProgress:
            m_lastPictureMs = nowMs();
            reportSpeed();
            break;
        default:
            break;
    }
}

void KvDevicePlayerView::writeThumbnail() {
    if (!m_ui->videoView()->snapshot(m_thumbnailPath)) {
        qCWarning(lcUi) << m_thumbnailPath << "could not be written";
        return;
    }
    // Snapshots are the user's to share, this one is not.
    if (!orvelle::takeFromOthers(m_thumbnailPath.toStdString()))
        qCWarning(lcUi) << "others may read" << m_thumbnailPath;
    emit playerViewThumbUpdate(this);
}

/// The label changes once a second at most, whatever the frame rate.
void KvDevicePlayerView::reportSpeed() {
    if (m_speedClock.isValid() && m_speedClock.elapsed() < kSpeedIntervalMs)
        return;
    m_speedClock.start();
    emit updateSpeedLabelSignal(m_player->speed());
}

void KvDevicePlayerView::onResponse(void* user, KvTUTKResponse* response) {
    static_cast<KvDevicePlayerView*>(user)->handleResponse(*response);
}

void KvDevicePlayerView::handleResponse(const KvTUTKResponse& response) {
    switch (response.type()) {
        case IOTYPE_USER_IPCAM_GETSTREAMCTRL_RESP:
            if (const auto quality = orvelle::StreamQualityReply::decode(response.data()).quality) {
                qDebug("resp->quality = %d, version = %d", *quality, m_version.load());
                emit updateResolutionSignal(*quality, m_version);
            }
            break;
        case IOTYPE_USER_IPCAM_DEVINFO_RESP:
            if (const auto version =
                    orvelle::SMsgAVIoctrlDeviceInfoResp::decode(response.data()).version) {
                m_version = static_cast<int>(*version);
                qDebug("version = %d", m_version.load());
            }
            break;
        case IOTYPE_USER_IPCAM_GET_DEVICE_TYPE_RESP:
            if (const auto type = orvelle::DeviceTypeReply::decode(response.data()).type) {
                m_deviceType = *type;
                qDebug("device type = %d", *type);
                emit updateDeviceTypeSignal();
            }
            break;
        default:
            break;
    }
}
