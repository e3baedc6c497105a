#include "link/result_codes.h"

namespace orvelle {

namespace {

struct ResultText {
    int code;
    const char* text;
};

constexpr ResultText kResultTexts[] = {
    {0, "success"},
    {IOTC_ER_TIMEOUT, "the peer takes nothing now"},
    {IOTC_ER_INVALID_SID, "no such session"},
    {AV_ER_INVALID_ARG, "no such channel, or a bad argument"},
    {AV_ER_BUFPARA_MAXSIZE_INSUFF, "the frame does not fit the buffer"},
    {AV_ER_EXCEED_MAX_SIZE, "a control message or frame is too long"},
    {AV_ER_WRONG_VIEWACCorPWD, "account or password refused"},
    {AV_ER_TIMEOUT, "nothing came in time"},
    {AV_ER_DATA_NOREADY, "no frame waits"},
    {AV_ER_INCOMPLETE_FRAME, "part of a frame is missing"},
    {AV_ER_LOSED_THIS_FRAME, "a frame number is missing"},
    {AV_ER_SESSION_CLOSE_BY_REMOTE, "the peer said goodbye"},
    {AV_ER_REMOTE_TIMEOUT_DISCONNECT, "the peer fell silent"},
    {AV_ER_NO_PERMISSION, "the camera refuses one more client"},
    {LINK_ER_ABORTED, "aborted"},
    {LINK_ER_NOT_FOUND, "no camera with this UID answered"},
    {LINK_ER_UNKNOWN_UID, "the host serves no camera with this UID"},
    {LINK_ER_NO_FREE_SESSION, "all session ids are taken"},
    {LINK_ER_NO_FREE_CHANNEL, "all channels are taken"},
    {LINK_ER_CHANNEL_IN_USE, "the channel is open already, or channel 0 is not yet"},
    {LINK_ER_VERSION, "the peer speaks another protocol version"},
    {LINK_ER_REFUSED, "the host refused the login"},
    {LINK_ER_PROTOCOL, "the peer broke the protocol"},
    {LINK_ER_NOT_INITIALIZED, "the link was not started"},
    {LINK_ER_NETWORK, "no network is up, no socket to be had, or the port is taken"},
    {LINK_ER_BAD_UID, "not a UID"},
    {LINK_ER_TOO_MANY_ATTEMPTS, "refused for now: too many attempts came from this address"},
    {LINK_ER_NO_SOCKET, "the system gives no socket"},
};

}  // namespace

const char* linkResultText(int code) {
    for (const ResultText& entry : kResultTexts) {
        if (entry.code == code)
            return entry.text;
    }
    return "unknown result";
}

}  // namespace orvelle
