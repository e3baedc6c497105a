#pragma once

#include <QElapsedTimer>
#include <QFile>
#include <QString>

#include <cstdint>
#include <memory>

#include "frames/ffmpeg_io_ptr.h"
#include "media/stages/recording_result.h"

namespace orvelle {

struct IoContextDeleter {
    void operator()(AVIOContext* io) const {
        av_freep(&io->buffer);
        avio_context_free(&io);
    }
};
using IoContextPtr = std::unique_ptr<AVIOContext, IoContextDeleter>;

/// EDQUOT, which not every system has.
constexpr int kQuotaError = FFERRTAG('Q', 'U', 'O', 'T');

/// What an error of a file means to a user; none for what is not negative.
RecordingFault recordingFaultOf(int error);

/// The file under a muxer. It keeps the first error that the disk gave, and writes nothing after
/// it. Belongs to one thread.
///
/// A file of fragments plays at any moment up to its last whole fragment, however the program
/// ends. finish() makes an ordinary file of it in place.
class RecordingSink {
public:
    enum class Layout { kPlain, kFragments };

    RecordingSink() = default;
    ~RecordingSink();  ///< closes without finishing
    RecordingSink(const RecordingSink&) = delete;
    RecordingSink& operator=(const RecordingSink&) = delete;

    /// Creates the file, or another with "-2", "-3", ... where the name is taken. 0 or an error.
    int create(const QString& path, Layout layout);
    QString path() const { return m_file.fileName(); }  ///< of the file really created
    AVIOContext* io() const { return m_io.get(); }

    /// Waits until what was written is on the disk, where a second has passed since that was so
    /// last.
    void syncWhenDue();
    int error() const { return m_error; }  ///< 0, or the FFmpeg code of the first error

    /// After the muxer's trailer: closes, and where there is room for its tables makes an ordinary
    /// file of fragments. A file in which nothing could be shown is deleted. Returns error().
    int finish();
    bool isKept() const { return m_isKept; }  ///< whether finish() left a file
    /// Closes and deletes the file.
    void discard();

private:
    static int writeTo(void* sink, uint8_t* bytes, int size);
    static int64_t seekIn(void* sink, int64_t offset, int whence);
    int write(const uint8_t* bytes, int size);
    int64_t seek(int64_t offset, int whence);
    int fail(int error, const QString& text);
    int openFree(const QString& path);
    void finishFragments();

    QFile m_file;
    bool m_hasFragments = false;
    bool m_isKept = false;
    IoContextPtr m_io;
    int m_error = 0;
    QElapsedTimer m_sinceSync;
    bool m_isSynced = true;
};

}  // namespace orvelle
