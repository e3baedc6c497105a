#include "media/recording/recording_sink.h"

#include <QFileInfo>

#include <algorithm>

#include "core/file_utils.h"
#include "media/media_log.h"
#include "media/recording/fragment_finisher.h"
#include "platform/write_fault.h"

namespace orvelle {

namespace {

/// Several seconds of sound, or the tables of a fragment with every packet that a second can bring:
/// these are patched while they are in the buffer, since the file itself is only written forwards.
constexpr int kBufferBytes = 256 * 1024;
constexpr int kMaxNames = 1000;
/// From the end of one to the next, so that a slow disk has time to take what waits.
constexpr qint64 kSyncIntervalMs = 1000;

/// Of the call that failed last; `other` where the system's reason says nothing to a user.
int errorOfLastCall(int other) {
    switch (lastWriteFault()) {
        case WriteFault::kDiskFull:
            return AVERROR(ENOSPC);
        case WriteFault::kQuota:
            return kQuotaError;
        case WriteFault::kFileTooLarge:
            return AVERROR(EFBIG);
        default:
            return other;
    }
}

QString numbered(const QFileInfo& file, int number) {
    const QString suffix = file.suffix().isEmpty() ? QString() : QLatin1Char('.') + file.suffix();
    return file.path() + QLatin1Char('/') + file.completeBaseName() + QLatin1Char('-') +
           QString::number(number) + suffix;
}

}  // namespace

RecordingFault recordingFaultOf(int error) {
    switch (std::min(error, 0)) {
        case 0:
            return RecordingFault::kNone;
        case AVERROR(ENOSPC):
            return RecordingFault::kDiskFull;
        case kQuotaError:
            return RecordingFault::kQuota;
        case AVERROR(EFBIG):
            return RecordingFault::kFileTooLarge;
        case AVERROR(ETIMEDOUT):
            return RecordingFault::kDiskTooSlow;
        default:
            return RecordingFault::kOther;
    }
}

RecordingSink::~RecordingSink() = default;

int RecordingSink::create(const QString& path, Layout layout) {
    if (const int error = openFree(path); error < 0) {
        qCWarning(lcMedia).noquote()
            << "no recording:" << path + QLatin1Char(':') << m_file.errorString();
        return error;
    }
    m_hasFragments = layout == Layout::kFragments;
    m_sinceSync.start();
    auto* buffer = static_cast<uint8_t*>(av_malloc(kBufferBytes));
    if (buffer)
        m_io.reset(avio_alloc_context(buffer, kBufferBytes, 1, this, nullptr, writeTo,
                                      m_hasFragments ? nullptr : seekIn));
    if (m_io)
        return 0;
    av_free(buffer);
    discard();
    return AVERROR(ENOMEM);
}

/// No two recordings take the same name, as only one of them can create the file.
int RecordingSink::openFree(const QString& path) {
    for (int number = 1; number <= kMaxNames; ++number) {
        m_file.setFileName(number == 1 ? path : numbered(QFileInfo(path), number));
        if (m_file.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered))
            return 0;
        const int error = errorOfLastCall(AVERROR(EACCES));
        if (!m_file.exists())
            return error;
    }
    return AVERROR(EEXIST);
}

int RecordingSink::writeTo(void* sink, uint8_t* bytes, int size) {
    return static_cast<RecordingSink*>(sink)->write(bytes, size);
}

int64_t RecordingSink::seekIn(void* sink, int64_t offset, int whence) {
    return static_cast<RecordingSink*>(sink)->seek(offset, whence);
}

int RecordingSink::write(const uint8_t* bytes, int size) {
    if (m_error < 0)
        return m_error;
    // A short count gives no reason; writing the rest does.
    for (qint64 done = 0; done < size;) {
        const qint64 written =
            m_file.write(reinterpret_cast<const char*>(bytes) + done, size - done);
        if (written <= 0)
            return fail(errorOfLastCall(AVERROR(EIO)), m_file.errorString());
        done += written;
    }
    m_isSynced = false;
    return size;
}

void RecordingSink::syncWhenDue() {
    if (m_isSynced || m_error < 0 || m_sinceSync.elapsed() < kSyncIntervalMs)
        return;
    if (!KvFileUtils::syncFile(m_file.fileName()))
        fail(errorOfLastCall(AVERROR(EIO)), QStringLiteral("the disk does not keep it"));
    m_isSynced = true;
    m_sinceSync.start();
}

int64_t RecordingSink::seek(int64_t offset, int whence) {
    if (whence & AVSEEK_SIZE)
        return m_file.size();
    const int origin = whence & ~AVSEEK_FORCE;
    if (origin != SEEK_SET)
        offset += origin == SEEK_CUR ? m_file.pos() : m_file.size();
    return m_file.seek(offset) ? offset : AVERROR(EIO);
}

int RecordingSink::fail(int error, const QString& text) {
    m_error = error;
    qCWarning(lcMedia).noquote() << "recording ends:" << m_file.fileName() + QLatin1Char(':')
                                 << text;
    return error;
}

int RecordingSink::finish() {
    if (!m_file.isOpen())
        return m_error;
    avio_flush(m_io.get());
    m_file.close();
    m_isKept = true;
    if (m_hasFragments)
        finishFragments();
    return m_error;
}

void RecordingSink::finishFragments() {
    using Outcome = FragmentFinisher::Outcome;
    switch (FragmentFinisher(m_file.fileName()).finish()) {
        case Outcome::kNoPicture:
            discard();
            break;
        case Outcome::kNotKept:
            fail(AVERROR(EIO), QStringLiteral("the disk does not keep it"));
            break;
        case Outcome::kNoRoom:
        case Outcome::kNotInFragments:
            qCWarning(lcMedia).noquote() << "recording stays in fragments:" << m_file.fileName();
            break;
        case Outcome::kFinished:
            break;
    }
}

void RecordingSink::discard() {
    m_file.close();
    m_file.remove();
    m_isKept = false;
}

}  // namespace orvelle
