#pragma once

#include <cstdint>
#include <functional>

/// Sessions to cameras by UID, and the search for cameras on the local network.
///
/// A session id (`sid`) names one attempt to reach one camera and, once it is connected, the
/// address it was found at. The login and everything that travels belong to the AV channels
/// opened on it (av.h). All functions may be called from any thread; results are 0 or a
/// positive handle for success and a negative code of link/result_codes.h for failure.

/// What is known of a connected session.
struct LinkSessionInfo {
    char uid[32];            ///< NUL-terminated
    char remoteAddress[46];  ///< numeric, NUL-terminated
    uint16_t remotePort;
};

/// One camera that answered a LAN search.
struct LanSearchRecord {
    char uid[32];  ///< NUL-terminated ASCII letters and digits
    char ip[46];   ///< numeric, NUL-terminated
    uint16_t port;
    char deviceName[64];  ///< NUL-terminated UTF-8
};

/// Starts the transport; calling it again changes nothing. `udpPort` 0 lets the system choose
/// the local port.
int IOTC_Initialize2(uint16_t udpPort);

/// Reserves a session id; an id is not given out again soon after it was closed.
int IOTC_Get_SessionID();

/// Finds the camera and binds it to `sid`; blocks for about 2 s when no camera answers.
/// Returns `sid`, or a negative code (not found, aborted, invalid sid).
int IOTC_Connect_ByUID_Parallel(const char* uid, int sid);

/// Fills `info` for a connected session; 0 or IOTC_ER_INVALID_SID.
int IOTC_Session_Check(int sid, LinkSessionInfo* info);

/// Aborts what is pending on the session (finding the camera, a login, a receive); they
/// return within 50 ms, and later ones on this session fail at once.
int IOTC_Connect_Stop_BySID(int sid);

/// Closes every channel of the session and frees the id.
void IOTC_Session_Close(int sid);

/// Asks the local network for cameras during `timeoutMs`; returns how many of the at most
/// `maxRecords` records were filled. Blocks; `isStopped`, asked on the calling thread, ends it
/// within 20 ms.
int IOTC_Lan_Search2(LanSearchRecord* records, int maxRecords, int timeoutMs,
                     const std::function<bool()>& isStopped = {});

/// The same, but hands over each answer as it comes, on the calling thread. A camera answers
/// several times, and anybody may claim to be one. `isStopped` may become true by an answer.
/// LINK_ER_NO_SOCKET at once when the system gives none, LINK_ER_NETWORK when no network is up in
/// which a camera could be, else 0.
int IOTC_Lan_Ask(int timeoutMs, const std::function<void(const LanSearchRecord&)>& onAnswer,
                 const std::function<bool()>& isStopped);
