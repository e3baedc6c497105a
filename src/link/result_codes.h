#pragma once

/// Results of the link; iotc.h and av.h return them, the device layer passes them through.
/// docs/protocol.md repeats the table with the causes, linkResultText() names them for logs.
enum LinkResult : int {
    IOTC_ER_TIMEOUT = -13,      ///< the peer takes nothing now
    IOTC_ER_INVALID_SID = -14,  ///< no such session, or it was closed or aborted

    AV_ER_INVALID_ARG = -20000,              ///< no such channel, or a bad argument
    AV_ER_BUFPARA_MAXSIZE_INSUFF = -20001,   ///< the frame does not fit the buffer; it was dropped
    AV_ER_EXCEED_MAX_SIZE = -20006,          ///< a control message or frame is too long
    AV_ER_WRONG_VIEWACCorPWD = -20009,       ///< account or password refused
    AV_ER_TIMEOUT = -20011,                  ///< nothing came in time
    AV_ER_DATA_NOREADY = -20012,             ///< no frame waits
    AV_ER_INCOMPLETE_FRAME = -20013,         ///< part of a frame is missing; it was dropped
    AV_ER_LOSED_THIS_FRAME = -20014,         ///< a frame number is missing
    AV_ER_SESSION_CLOSE_BY_REMOTE = -20015,  ///< the camera said goodbye
    AV_ER_REMOTE_TIMEOUT_DISCONNECT = -20016,  ///< the camera fell silent
    AV_ER_NO_PERMISSION = -20025,              ///< the camera refuses one more client

    // Ours, where a cause would otherwise be lost.
    LINK_ER_ABORTED =
        -30001,  ///< finding or login ended by IOTC_Connect_Stop_BySID or avClientExit
    LINK_ER_NOT_FOUND = -30002,        ///< no camera with this UID answered on the network
    LINK_ER_UNKNOWN_UID = -30003,      ///< the host answered but serves no camera with this UID
    LINK_ER_NO_FREE_SESSION = -30004,  ///< all session ids of this client are taken
    LINK_ER_NO_FREE_CHANNEL = -30005,  ///< all AV channels of this client are taken
    LINK_ER_CHANNEL_IN_USE = -30006,   ///< the channel is open already, or channel 0 is not yet
    LINK_ER_VERSION = -30007,          ///< the peer speaks another protocol version
    LINK_ER_REFUSED = -30008,   ///< the host refused the login without naming a cause of this table
    LINK_ER_PROTOCOL = -30009,  ///< the peer sent bytes that break the protocol; it was cut off
    LINK_ER_NOT_INITIALIZED = -30010,  ///< IOTC_Initialize2 or avInitialize was not called
    LINK_ER_NETWORK =
        -30011,  ///< no network is up, the system gave no socket, or the port is taken
    LINK_ER_BAD_UID = -30012,  ///< the UID is empty, too long or not of letters and digits
    LINK_ER_TOO_MANY_ATTEMPTS =
        -30013,                  ///< refused for now: too many attempts came from this address
    LINK_ER_NO_SOCKET = -30014,  ///< the system gives this program no socket
};

namespace orvelle {

/// Name and meaning of a result for a log line; never null.
const char* linkResultText(int code);

}  // namespace orvelle
