#include "link/iotc.h"

#include "link/client/lan_query.h"
#include "link/client/link_client.h"
#include "link/clock.h"
#include "link/result_codes.h"

#include <algorithm>
#include <cstring>

namespace {

using orvelle::LinkClient;

constexpr int kSearchSliceMs = 20;

template <size_t Size>
void putText(char (&to)[Size], const std::string& text) {
    const size_t size = std::min(text.size(), Size - 1);
    std::memcpy(to, text.data(), size);
    to[size] = '\0';
}

LanSearchRecord recordOf(const orvelle::LanAnswer& answer) {
    LanSearchRecord record{};
    putText(record.uid, answer.uid);
    putText(record.ip, orvelle::hostText(answer.address));
    putText(record.deviceName, answer.deviceName);
    record.port = ntohs(answer.address.sin_port);
    return record;
}

}  // namespace

int IOTC_Initialize2(uint16_t udpPort) {
    return LinkClient::instance().start(udpPort);
}

int IOTC_Get_SessionID() {
    return LinkClient::instance().openSession();
}

int IOTC_Connect_ByUID_Parallel(const char* uid, int sid) {
    return uid ? LinkClient::instance().find(uid, sid) : int{LINK_ER_BAD_UID};
}

int IOTC_Session_Check(int sid, LinkSessionInfo* info) {
    const auto session = LinkClient::instance().session(sid);
    if (!session || !session->isBound() || !info)
        return IOTC_ER_INVALID_SID;
    *info = {};
    putText(info->uid, session->uid());
    putText(info->remoteAddress, orvelle::hostText(session->address()));
    info->remotePort = ntohs(session->address().sin_port);
    return 0;
}

int IOTC_Connect_Stop_BySID(int sid) {
    const auto session = LinkClient::instance().session(sid);
    if (!session)
        return IOTC_ER_INVALID_SID;
    session->abort();
    return 0;
}

void IOTC_Session_Close(int sid) {
    LinkClient::instance().closeSession(sid);
}

int IOTC_Lan_Search2(LanSearchRecord* records, int maxRecords, int timeoutMs,
                     const std::function<bool()>& isStopped) {
    if (!records || maxRecords < 1)
        return AV_ER_INVALID_ARG;
    int count = 0;
    const auto collect = [&](const LanSearchRecord& record) {
        // A camera answers each query, and once for each network that reaches it.
        const bool isKnown = std::any_of(records, records + count, [&](const auto& other) {
            return std::strcmp(other.uid, record.uid) == 0 && other.port == record.port;
        });
        if (!isKnown)
            records[count++] = record;
    };
    IOTC_Lan_Ask(timeoutMs, collect,
                 [&] { return count == maxRecords || (isStopped && isStopped()); });
    return count;
}

int IOTC_Lan_Ask(int timeoutMs, const std::function<void(const LanSearchRecord&)>& onAnswer,
                 const std::function<bool()>& isStopped) {
    const int64_t endMs = orvelle::steadyMilliseconds() + timeoutMs;
    orvelle::LanQuery query{{}};
    if (!query.isOpen())
        return LINK_ER_NO_SOCKET;
    while (orvelle::steadyMilliseconds() < endMs && !isStopped()) {
        if (const auto answer = query.next(kSearchSliceMs))
            onAnswer(recordOf(*answer));
    }
    return query.wasNetworkUp() ? 0 : LINK_ER_NETWORK;
}
