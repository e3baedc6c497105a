#include "ui/list/thumbnail_loader.h"

#include <QGuiApplication>
#include <QImage>
#include <QMetaObject>

#include "ui/list/thumbnail_thread.h"
#include "ui/widgets/widget_utils.h"

namespace orvelle {

namespace {

constexpr int kMaxPixmaps = 256;  // some 15 MB

}  // namespace

ThumbnailLoader::ThumbnailLoader(int width, QObject* parent)
    : QObject(parent), m_width(width), m_default(makeDefault(width)), m_pixmaps(kMaxPixmaps) {}

ThumbnailLoader::~ThumbnailLoader() {
    KvThread::stopAndDelete(m_thread);
}

QPixmap ThumbnailLoader::makeDefault(int width) {
    const qreal ratio = qGuiApp->devicePixelRatio();
    QPixmap picture = QPixmap(KvWidgetUtils::image(QStringLiteral("device_bg")))
                          .scaledToWidth(qRound(width * ratio), Qt::SmoothTransformation);
    picture.setDevicePixelRatio(ratio);
    return picture;
}

QPixmap ThumbnailLoader::pixmap(const QString& path) const {
    const QPixmap* known = m_pixmaps.object(path);
    return known ? *known : m_default;
}

void ThumbnailLoader::request(const EntryThumbnail& thumbnail) {
    if (thumbnail.path.isEmpty())
        return;
    if (!m_thread) {
        const int width = qRound(m_width * qGuiApp->devicePixelRatio());
        m_thread = std::make_unique<ThumbnailThread>(
            width, [this](const QString& path, const QImage& image) {
                QMetaObject::invokeMethod(
                    this, [this, path, image] { take(path, image); }, Qt::QueuedConnection);
            });
        m_thread->start(QThread::LowPriority);
    }
    if (m_readable.contains(thumbnail.path) && !m_pixmaps.contains(thumbnail.path))
        m_thread->forget(thumbnail.path);
    m_thread->request(thumbnail);
}

void ThumbnailLoader::take(const QString& path, const QImage& image) {
    if (image.isNull()) {
        m_readable.remove(path);
        m_pixmaps.remove(path);
    } else {
        auto* pixmap = new QPixmap(QPixmap::fromImage(image));
        pixmap->setDevicePixelRatio(qreal(pixmap->width()) / m_width);
        m_readable.insert(path);
        m_pixmaps.insert(path, pixmap);
    }
    emit changed(path);
}

}  // namespace orvelle
