#pragma once

/// Results of the link; iotc.h and av.h return them, the device layer passes them through.
/// docs/protocol.md repeats the table with the causes.
enum LinkResult : int {
    IOTC_ER_TIMEOUT = -13,      ///< the peer takes nothing now
    IOTC_ER_INVALID_SID = -14,  ///< no such session, or it was closed

    AV_ER_INVALID_ARG = -20000,                ///< no such channel, or a bad argument
    AV_ER_BUFPARA_MAXSIZE_INSUFF = -20001,     ///< the frame does not fit the buffer; it was dropped
    AV_ER_EXCEED_MAX_SIZE = -20006,            ///< a control message is too long
    AV_ER_WRONG_VIEWACCorPWD = -20009,         ///< account or password refused
    AV_ER_TIMEOUT = -20011,                    ///< nothing came in time
    AV_ER_DATA_NOREADY = -20012,               ///< no frame waits
    AV_ER_INCOMPLETE_FRAME = -20013,           ///< part of a frame is missing; it was dropped
    AV_ER_LOSED_THIS_FRAME = -20014,           ///< a frame number is missing
    AV_ER_SESSION_CLOSE_BY_REMOTE = -20015,    ///< the camera said goodbye
    AV_ER_REMOTE_TIMEOUT_DISCONNECT = -20016,  ///< the camera fell silent
    AV_ER_NO_PERMISSION = -20025,              ///< the camera refuses one more client
};
