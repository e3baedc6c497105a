#include "link/av.h"

#include "core/wipe.h"
#include "link/client/link_client.h"
#include "link/result_codes.h"

#include <algorithm>

namespace {

using orvelle::ClientChannel;
using orvelle::LinkClient;
using orvelle::LinkFrame;

std::shared_ptr<ClientChannel> channelOf(int avIndex) {
    return LinkClient::instance().channel(avIndex);
}

void setIfWanted(int* to, int value) {
    if (to)
        *to = value;
}

// Copies a taken frame out; the size, or -20001 when it does not fit.
int deliver(const LinkFrame& frame, char* buffer, int bufferSize, char* info) {
    std::copy(frame.info.begin(), frame.info.end(), info);
    if (frame.data.size() > static_cast<size_t>(bufferSize))
        return AV_ER_BUFPARA_MAXSIZE_INSUFF;
    std::copy(frame.data.begin(), frame.data.end(), buffer);
    return static_cast<int>(frame.data.size());
}

bool areFrameArgumentsGood(const char* buffer, int bufferSize, const char* info, int infoSize,
                           const uint32_t* frameIndex) {
    return buffer && bufferSize > 0 && info && infoSize >= orvelle::kFrameInfoBytes && frameIndex;
}

}  // namespace

int avInitialize(int maxChannels) {
    return LinkClient::instance().setMaxChannels(maxChannels);
}

int avClientStart2(int sid, const char* account, const char* password, uint32_t timeoutSec,
                   uint32_t* serviceType, uint8_t channel, int* resend) {
    if (!account || !password || channel >= orvelle::kMaxLinkChannels)
        return AV_ER_INVALID_ARG;
    if (serviceType)
        *serviceType = 0;
    setIfWanted(resend, 1);
    std::string secret = password;
    const orvelle::WipedAtEnd wiped(secret);
    return LinkClient::instance().openChannel(sid, account, secret, channel,
                                              int64_t{timeoutSec} * 1000);
}

void avClientStop(int avIndex) {
    LinkClient::instance().closeChannel(avIndex);
}

void avClientExit(int sid, uint8_t) {
    if (const auto session = LinkClient::instance().session(sid))
        session->interrupt();
}

int avSendIOCtrl(int avIndex, uint32_t type, const char* data, int size) {
    const auto channel = channelOf(avIndex);
    return channel ? channel->sendControl(type, data, size) : int{AV_ER_INVALID_ARG};
}

int avRecvIOCtrl(int avIndex, uint32_t* type, char* buffer, int maxSize, uint32_t timeoutMs,
                 const AvStopCheck& stop) {
    const auto channel = channelOf(avIndex);
    if (!channel || !type || !buffer || maxSize < 0)
        return AV_ER_INVALID_ARG;
    return channel->receiveControl(type, buffer, maxSize, timeoutMs, stop);
}

int avRecvFrameData2(int avIndex, char* buffer, int bufferSize, int* actualSize, int* expectedSize,
                     char* info, int infoSize, int* infoActualSize, uint32_t* frameIndex) {
    const auto channel = channelOf(avIndex);
    if (!channel || !areFrameArgumentsGood(buffer, bufferSize, info, infoSize, frameIndex))
        return AV_ER_INVALID_ARG;
    LinkFrame frame;
    if (const int code = channel->takeVideo(&frame, frameIndex))
        return code;
    setIfWanted(expectedSize, static_cast<int>(frame.data.size()));
    setIfWanted(infoActualSize, orvelle::kFrameInfoBytes);
    const int size = deliver(frame, buffer, bufferSize, info);
    setIfWanted(actualSize, std::max(size, 0));
    if (size < 0)
        channel->noteVideoDropped();
    return size;
}

int avCheckAudioBuf(int avIndex) {
    const auto channel = channelOf(avIndex);
    return channel ? channel->waitingAudio() : int{AV_ER_INVALID_ARG};
}

int avRecvAudioData(int avIndex, char* buffer, int bufferSize, char* info, int infoSize,
                    uint32_t* frameIndex) {
    const auto channel = channelOf(avIndex);
    if (!channel || !areFrameArgumentsGood(buffer, bufferSize, info, infoSize, frameIndex))
        return AV_ER_INVALID_ARG;
    LinkFrame frame;
    if (const int code = channel->takeAudio(&frame, frameIndex))
        return code;
    return deliver(frame, buffer, bufferSize, info);
}

void avWaitVideo(int avIndex, int timeoutMs, const AvStopCheck& stop) {
    if (const auto channel = channelOf(avIndex))
        channel->waitVideo(timeoutMs, stop);
}

void avWaitAudio(int avIndex, int moreThan, int timeoutMs, const AvStopCheck& stop) {
    if (const auto channel = channelOf(avIndex))
        channel->waitAudio(moreThan, timeoutMs, stop);
}

void avWake(int avIndex) {
    if (const auto channel = channelOf(avIndex))
        channel->wake();
}

void avDiscardMedia(int avIndex) {
    if (const auto channel = channelOf(avIndex))
        channel->discardMedia();
}

uint32_t avLostVideoFrames(int avIndex) {
    const auto channel = channelOf(avIndex);
    return channel ? channel->lostVideoFrames() : 0;
}
