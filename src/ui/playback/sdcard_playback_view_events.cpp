#include <QtDebug>

#include "device/device_messages.h"
#include "device/tutk_request.h"
#include "media/live/tutk_player.h"
#include "ui/playback/sdcard_playback_view.h"

// What runs on the player's and the device's threads.

int32_t KvSDCardPlaybackView::onPlayerEvent(void* user, int32_t event, double a, double) {
    static_cast<KvSDCardPlaybackView*>(user)->handlePlayerEvent(event, a);
    return 0;
}

void KvSDCardPlaybackView::handlePlayerEvent(int32_t event, double seconds) {
    switch (event) {
        case KvBasePlayerProgress:
            emit updateTimeLineViewSignal(seconds);
            break;
        case KvBasePlayerOpenFailed:
            m_openFailed = true;
            emit playFailedSignal();
            break;
        case KvBasePlayerFirstFrame:
            m_firstPicture = true;
            emit hideLoadingViewSignal();
            break;
        case KvBasePlayerVideoEnded:
            qDebug("play ended do play next");
            m_ended = true;
            emit playNextSignal();
            break;
        default:
            break;
    }
}

void KvSDCardPlaybackView::onResponse(void* user, KvTUTKResponse* response) {
    static_cast<KvSDCardPlaybackView*>(user)->handleResponse(*response);
}

void KvSDCardPlaybackView::handleResponse(const KvTUTKResponse& response) {
    if (response.type() == IOTYPE_USER_IPCAM_DEVINFO_RESP) {
        const auto info = orvelle::SMsgAVIoctrlDeviceInfoResp::decode(response.data());
        m_totalMiB = static_cast<int>(info.totalMiB.value_or(0));
        emit updateSDCardSignal();
        return;
    }
    if (response.type() != IOTYPE_USER_IPCAM_LISTEVENT_VBK_RESP)
        return;
    const auto list = orvelle::SMsgAVIoctrlListEventResp_VBK::decode(response.data());
    qDebug("SMsgAVIoctrlListEventResp_VBK count = %d, misscard = %d", list.count, list.misscard);
    for (const orvelle::SAvEvent_VBK& run : list.runs) {
        qDebug("SAvEvent_VBK -> start = %d, num = %d", static_cast<int>(run.start),
               static_cast<int>(run.num));
        qDebug() << "QDateTime -> " << QDateTime::fromSecsSinceEpoch(run.start);
    }
    if (list.misscard != 0 && list.runs.isEmpty()) {
        m_totalMiB = 0;
        emit updateSDCardSignal();
        return;
    }
    emit updateVideoInfo(orvelle::runsOf(list));
}
