#include "camera/camera_commands.h"

#include <QLoggingCategory>

#include "camera/camera_log.h"
#include "camera/camera_messages.h"
#include "link/io_types.h"

namespace orvelle {

namespace {

constexpr size_t kMaxRefusedTypes = 64;  ///< a hostile client must not grow the list

struct MessageSize {
    uint32_t type;
    size_t bytes;
};

constexpr MessageSize kSizes[] = {
    {IOTYPE_INNER_SND_DATA_DELAY, kShortRequestBytes},
    {IOTYPE_USER_IPCAM_START, kRequestBytes},
    {IOTYPE_USER_IPCAM_STOP, kRequestBytes},
    {IOTYPE_USER_IPCAM_AUDIOSTART, kRequestBytes},
    {IOTYPE_USER_IPCAM_AUDIOSTOP, kRequestBytes},
    {IOTYPE_USER_IPCAM_RECORD_PLAYCONTROL, kLongRequestBytes},
    {IOTYPE_USER_IPCAM_GETSTREAMCTRL_REQ, kRequestBytes},
    {IOTYPE_USER_IPCAM_DEVINFO_REQ, kShortRequestBytes},
    {IOTYPE_USER_IPCAM_GETWIFI_REQ, kShortRequestBytes},
    {IOTYPE_USER_IPCAM_FORMATEXTSTORAGE_REQ, kRequestBytes},
    {IOTYPE_USER_IPCAM_GET_TIMEZONE_REQ, kRequestBytes},
    {IOTYPE_USER_IPCAM_LISTEVENT_VBK_REQ, kLongRequestBytes},
    {IOTYPE_USER_IPCAM_RECORD_ROOM, kRoomBytes},
    {IOTYPE_USER_IPCAM_GET_DEVICE_TYPE_REQ, kRequestBytes},
    {IOTYPE_USER_IPCAM_KEEPALIVE, kRequestBytes},
    {IOTYPE_USER_IPCAM_PTZ_COMMAND, kRequestBytes},
    {IOTYPE_CARD_OVERVIEW_REQ, kRequestBytes},
    {IOTYPE_CARD_DOWNLOAD, kLongRequestBytes},
};

const MessageSize* sizeOf(uint32_t type) {
    for (const MessageSize& entry : kSizes) {
        if (entry.type == type)
            return &entry;
    }
    return nullptr;
}

}  // namespace

CameraCommands::CameraCommands(const CameraProfile& profile, CameraActions* actions)
    : m_profile(profile), m_actions(actions) {}

void CameraCommands::handle(int clientId, uint32_t type, const uint8_t* data, size_t size) {
    const MessageSize* known = sizeOf(type);
    if (!known)
        refuse(type, size, "unknown");
    else if (size < known->bytes)
        refuse(type, size, "too short");
    else if (!act(clientId, type, data))
        answer(clientId, type);
}

bool CameraCommands::act(int clientId, uint32_t type, const uint8_t* data) {
    switch (type) {
        case IOTYPE_USER_IPCAM_START:
            m_actions->setVideo(clientId, true);
            return true;
        case IOTYPE_USER_IPCAM_STOP:
            m_actions->setVideo(clientId, false);
            return true;
        case IOTYPE_USER_IPCAM_AUDIOSTART:
            m_actions->setAudio(clientId, true);
            return true;
        case IOTYPE_USER_IPCAM_AUDIOSTOP:
            m_actions->setAudio(clientId, false);
            return true;
        case IOTYPE_USER_IPCAM_PTZ_COMMAND:
            m_actions->turn(clientId, data[0], data[1]);
            return true;
        case IOTYPE_USER_IPCAM_LISTEVENT_VBK_REQ:
            m_actions->listRecordings(clientId, readListRequest(data, m_profile.timezoneMinutes));
            return true;
        case IOTYPE_USER_IPCAM_RECORD_PLAYCONTROL:
            m_actions->playRecording(clientId, readPlayRequest(data));
            return true;
        case IOTYPE_CARD_DOWNLOAD:
            m_actions->downloadRecording(clientId, readPlayRequest(data));
            return true;
        case IOTYPE_USER_IPCAM_RECORD_ROOM:
            m_actions->grantRoom(clientId, readRoomGrant(data));
            return true;
        case IOTYPE_USER_IPCAM_FORMATEXTSTORAGE_REQ:
            m_actions->formatCard(clientId);
            return true;
        default:
            return false;
    }
}

// The start notice and the keep-alive want no answer.
void CameraCommands::answer(int clientId, uint32_t type) {
    const auto reply = [&](const std::vector<uint8_t>& payload) {
        m_actions->reply(clientId, type + 1, payload);
    };
    switch (type) {
        case IOTYPE_USER_IPCAM_GETSTREAMCTRL_REQ:
            return reply(streamQualityReply(m_profile));
        case IOTYPE_USER_IPCAM_DEVINFO_REQ:
            return reply(deviceInfoReply(m_profile, m_actions->cardSpace()));
        case IOTYPE_USER_IPCAM_GETWIFI_REQ:
            return reply(wifiReply(m_profile));
        case IOTYPE_USER_IPCAM_GET_TIMEZONE_REQ:
            return reply(timezoneReply(m_profile));
        case IOTYPE_USER_IPCAM_GET_DEVICE_TYPE_REQ:
            return reply(deviceTypeReply(m_profile));
        case IOTYPE_CARD_OVERVIEW_REQ:
            return reply(overviewReply(m_actions->cardOverview(), m_profile.timezoneMinutes));
        default:
            return;
    }
}

void CameraCommands::refuse(uint32_t type, size_t size, const char* reason) {
    if (m_refused.size() >= kMaxRefusedTypes || !m_refused.insert(type).second)
        return;
    qCWarning(lcCamera, "message 0x%04X of %zu bytes ignored: %s", type, size, reason);
}

}  // namespace orvelle
