#include "icons/ico_writer.h"

#include <QBuffer>
#include <QDataStream>
#include <QFile>

#include <cstdio>

namespace orvelle::icons {
namespace {

constexpr quint16 kIconFile = 1;
constexpr quint16 kPlanes = 1;
constexpr quint16 kBitsPerPixel = 32;
constexpr quint32 kHeaderBytes = 6;
constexpr quint32 kEntryBytes = 16;
constexpr int kMaxPixels = 256;

// Windows has taken PNG for an image of any size since Vista.
QByteArray asPng(const QImage& image) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    if (image.isNull() || image.width() > kMaxPixels || !image.save(&buffer, "PNG"))
        return {};
    return bytes;
}

}  // namespace

// Header, one entry an image, then the images.
bool writeIco(const QString& path, const std::vector<QImage>& images) {
    QFile file(path);
    QByteArray pictures;
    bool isWritten = file.open(QIODevice::WriteOnly);
    const auto count = static_cast<quint16>(images.size());
    QDataStream out(&file);
    out.setByteOrder(QDataStream::LittleEndian);
    out << quint16{0} << kIconFile << count;
    for (const QImage& image : images) {
        const QByteArray png = asPng(image);
        isWritten = isWritten && !png.isEmpty();
        const auto side = static_cast<quint8>(image.width() % kMaxPixels);  // 0 stands for 256
        const auto offset =
            kHeaderBytes + kEntryBytes * count + static_cast<quint32>(pictures.size());
        out << side << side << quint8{0} << quint8{0} << kPlanes << kBitsPerPixel
            << static_cast<quint32>(png.size()) << offset;
        pictures += png;
    }
    isWritten = isWritten && file.write(pictures) == pictures.size() && file.flush();
    if (!isWritten)
        std::fprintf(stderr, "%s: not written\n", qPrintable(path));
    return isWritten;
}

}  // namespace orvelle::icons
