#pragma once

#include <QString>

#include <deque>
#include <optional>

#include "camera/encoding/adts.h"
#include "camera/feed/encoded_frame.h"
#include "frames/ffmpeg_io_ptr.h"

namespace orvelle {

/// Reads a recording back as the frames that were sent, also one that a crash cut short or that is
/// still being written. One thread.
class RecordingReader {
public:
    /// Empty on success, else one line of reason.
    QString open(const QString& path);

    /// Opens the same recording again, perhaps under another name, which may have grown: next()
    /// goes on where it ended. Nothing more comes when it cannot be read.
    void reopen(const QString& path);

    /// The next frame in the order of the file; none at its end or where it is torn.
    /// Times count from the recording's start.
    std::optional<EncodedFrame> next();

    /// The same from the last key frame at or before `timeUs` on; from the first when there is
    /// none. To be called before next(). A file that is finished need not be read up to there, but
    /// cannot be reopened then.
    void seek(int64_t timeUs, bool isFinished);

private:
    std::optional<EncodedFrame> readFrame();
    bool openFilter();
    void jumpTowards(int64_t timeUs);
    std::optional<EncodedFrame> frameOf(AVPacket* packet);
    SharedBytes soundBytes(const AVPacket& packet) const;

    QString m_path;
    InputFormatPtr m_format;
    const AVStream* m_video = nullptr;
    const AVStream* m_audio = nullptr;  ///< null: silent
    std::optional<AdtsFormat> m_adts;   ///< of AAC
    BitstreamFilterPtr m_filter;        ///< to Annex B
    PacketPtr m_packet;
    std::deque<EncodedFrame> m_ahead;  ///< read while seeking
    int64_t m_readFrames = 0;          ///< since the start of the file
};

}  // namespace orvelle
