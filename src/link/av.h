#pragma once

#include "link/limits.h"

#include <cstdint>
#include <functional>

/// AV channels of a session: login, control messages, video and audio frames.
///
/// An AV index names one logged-in channel; an index is not reused soon, so a late call on a
/// closed one fails with AV_ER_INVALID_ARG. All functions may be called from any thread;
/// results are 0 or positive for success, else a code of link/result_codes.h.

/// Asked by a waiting call whether its caller wants it to return early. It runs under the
/// channel's lock and must only read an atomic; whoever makes it true calls avWake() next.
using AvStopCheck = std::function<bool()>;

/// At most `maxChannels` channels may be open at once.
int avInitialize(int maxChannels);

/// Logs in on `sid` and returns the new AV index. Blocks until the camera answered or for
/// `timeoutSec` (0: without bound); IOTC_Connect_Stop_BySID ends it within 50 ms.
/// AV_ER_WRONG_VIEWACCorPWD tells a refused password from a silent camera.
int avClientStart2(int sid, const char* account, const char* password, uint32_t timeoutSec,
                   uint32_t* serviceType, uint8_t channel, int* resend);

/// Closes a channel; the camera sees an orderly goodbye, which is not waited for.
void avClientStop(int avIndex);

/// Ends pending logins (LINK_ER_ABORTED) and waiting receives (AV_ER_TIMEOUT) of every channel of
/// `sid`, without closing anything. `channel` is not looked at: callers pass an index cut to 8
/// bits.
void avClientExit(int sid, uint8_t channel);

/// Sends a control message of at most kMaxControlBytes. -13 when the peer takes nothing now.
int avSendIOCtrl(int avIndex, uint32_t type, const char* data, int size);

/// Waits up to `timeoutMs` for a control message; returns its payload size, AV_ER_TIMEOUT
/// when none came or `stop` became true, AV_ER_EXCEED_MAX_SIZE when it does not fit (it is
/// dropped), else the reason why the channel ended.
int avRecvIOCtrl(int avIndex, uint32_t* type, char* buffer, int maxSize, uint32_t timeoutMs,
                 const AvStopCheck& stop = {});

/// Takes the next whole video frame; returns its size. Never blocks: AV_ER_DATA_NOREADY when
/// none waits, AV_ER_LOSED_THIS_FRAME once for each gap in the frame numbers (the number is
/// in *frameIndex), AV_ER_BUFPARA_MAXSIZE_INSUFF when the frame does not fit (dropped).
/// `info` receives the 16-byte frame information.
int avRecvFrameData2(int avIndex, char* buffer, int bufferSize, int* actualSize, int* expectedSize,
                     char* info, int infoSize, int* infoActualSize, uint32_t* frameIndex);

/// Number of audio frames that wait, or a negative code.
int avCheckAudioBuf(int avIndex);

/// Takes the next audio frame; codes as avRecvFrameData2. Never blocks.
int avRecvAudioData(int avIndex, char* buffer, int bufferSize, char* info, int infoSize,
                    uint32_t* frameIndex);

/// Waits until a video frame (or an error) can be taken, `timeoutMs` passed or `stop` is true.
void avWaitVideo(int avIndex, int timeoutMs, const AvStopCheck& stop);

/// The same until more than `moreThan` audio frames wait.
void avWaitAudio(int avIndex, int moreThan, int timeoutMs, const AvStopCheck& stop);

/// Makes every waiting call on the channel ask its stop check again. Any thread.
void avWake(int avIndex);

/// Forgets the frames that wait and takes video up again at the next key frame, so that a reader
/// who comes back does not get old pictures. What was forgotten counts as neither lost nor gap.
void avDiscardMedia(int avIndex);

/// Whole frames that this channel lost or the camera dropped, by gaps in their numbers.
uint32_t avLostVideoFrames(int avIndex);
