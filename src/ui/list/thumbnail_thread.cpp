#include "ui/list/thumbnail_thread.h"

#include <QDateTime>
#include <QFileInfo>
#include <QImageReader>

#include <algorithm>

#include "ui/logging.h"

namespace orvelle {

namespace {

// Far above what a camera's picture takes.
constexpr qint64 kMaxBytes = 8 * 1024 * 1024;
constexpr int kMaxSide = 8192;

QSize scaledSize(const QSize& size, int width) {
    const int height = static_cast<int>(qint64(size.height()) * width / size.width());
    return {width, std::clamp(height, 1, 2 * width)};
}

}  // namespace

QImage readThumbnail(const QString& path, int width) {
    // The reader would complain about a file that is not there.
    const QFileInfo file(path);
    if (!file.exists() || file.size() > kMaxBytes)
        return {};
    QImageReader reader(path, "jpeg");
    reader.setAutoDetectImageFormat(false);
    const QSize size = reader.size();
    if (size.isEmpty() || size.width() > kMaxSide || size.height() > kMaxSide)
        return {};
    reader.setScaledSize(scaledSize(size, width));
    return reader.read();
}

ThumbnailThread::ThumbnailThread(int width, Callback callback)
    : KvThread(QStringLiteral("thumbnails")), m_width(width), m_callback(std::move(callback)) {}

void ThumbnailThread::stop() {
    KvThread::stop();
    const std::lock_guard<std::mutex> lock(m_requestMutex);
    m_requestSignal.notify_all();
}

void ThumbnailThread::request(const EntryThumbnail& thumbnail) {
    const std::lock_guard<std::mutex> lock(m_requestMutex);
    EntryThumbnail latest = thumbnail;
    const auto same = [&thumbnail](const auto& other) { return other.path == thumbnail.path; };
    const auto waiting = std::find_if(m_requests.begin(), m_requests.end(), same);
    if (waiting != m_requests.end()) {
        latest.isStale = latest.isStale || waiting->isStale;
        m_requests.erase(waiting);
    }
    m_requests.push_back(latest);
    m_requestSignal.notify_one();
}

void ThumbnailThread::forget(const QString& path) {
    const std::lock_guard<std::mutex> lock(m_requestMutex);
    m_known.remove(path);
}

void ThumbnailThread::run() {
    EntryThumbnail request;
    while (waitForRequest(request))
        serve(request);
}

bool ThumbnailThread::waitForRequest(EntryThumbnail& request) {
    std::unique_lock<std::mutex> lock(m_requestMutex);
    m_requestSignal.wait(lock, [this] { return isStopped() || !m_requests.empty(); });
    if (isStopped())
        return false;
    request = m_requests.back();
    m_requests.pop_back();
    return true;
}

void ThumbnailThread::serve(const EntryThumbnail& request) {
    refreshThumbnail(request);
    const Version version = versionOf(request.path);
    if (!isNew(request.path, version))
        return;
    const QImage image = readThumbnail(request.path, m_width);
    if (image.isNull() && !(version == Version()))
        qCWarning(lcUi) << request.path << "is no usable picture";
    m_callback(request.path, image);
}

ThumbnailThread::Version ThumbnailThread::versionOf(const QString& path) {
    const QFileInfo file(path);
    if (!file.exists())
        return {};
    return {file.lastModified().toMSecsSinceEpoch(), file.size()};
}

bool ThumbnailThread::isNew(const QString& path, const Version& version) {
    const std::lock_guard<std::mutex> lock(m_requestMutex);
    const auto known = m_known.constFind(path);
    if (known != m_known.constEnd() && *known == version)
        return false;
    m_known.insert(path, version);
    return true;
}

}  // namespace orvelle
