#include "icons/icon_painter.h"

#include <QFile>
#include <QFontDatabase>
#include <QJsonDocument>
#include <QPainter>
#include <QSvgRenderer>

#include <cstdio>

namespace orvelle::icons {
namespace {

// A font that lacks Chinese would silently give empty boxes, so only these are taken.
QString chineseFont() {
    const QStringList known = {QStringLiteral("WenQuanYi Micro Hei"),
                               QStringLiteral("Noto Sans CJK SC"),
                               QStringLiteral("Microsoft YaHei")};
    const QStringList present = QFontDatabase().families();
    for (const QString& family : known)
        if (present.contains(family))
            return family;
    return {};
}

void paintChip(QPainter* painter, const Icon& icon) {
    if (!icon.chip.isValid())
        return;
    painter->setPen(Qt::NoPen);
    painter->setBrush(icon.chip);
    // One pixel stays clear, so that scaling the image never shows a cut edge.
    const QRectF area(1, 1, icon.size.width() - 2, icon.size.height() - 2);
    painter->drawRoundedRect(area, icon.chipRadius, icon.chipRadius);
}

// Whole pixels, so that the straight lines of a drawing stay on the pixel grid.
QRectF glyphArea(const Icon& icon, int scale) {
    const QSize spare = (icon.size - icon.glyph) * scale;
    const QPointF corner(spare.width() / 2, spare.height() / 2);
    return QRectF(corner / scale, QSizeF(icon.glyph));
}

}  // namespace

IconPainter::IconPainter(const QString& directory)
    : m_directory(directory), m_textFont(chineseFont()) {
    m_texts = QJsonDocument::fromJson(read(QStringLiteral("texts.json"))).object();
}

QByteArray IconPainter::read(const QString& name) {
    const QString path = m_directory + QLatin1Char('/') + name;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "%s: %s\n", qPrintable(path), qPrintable(file.errorString()));
        return {};
    }
    if (!m_filesRead.contains(path))
        m_filesRead.append(path);
    return file.readAll();
}

bool IconPainter::putTexts(const Icon& icon, QByteArray* svg) {
    if (m_textFont.isEmpty()) {
        std::fprintf(stderr, "%s: no Chinese font (Debian: fonts-wqy-microhei)\n",
                     qPrintable(icon.source));
        return false;
    }
    const QJsonObject texts = m_texts[icon.language].toObject();
    for (auto text = texts.begin(); text != texts.end(); ++text)
        svg->replace('{' + text.key().toUtf8() + '}',
                     text.value().toString().toHtmlEscaped().toUtf8());
    svg->replace("{font}", m_textFont.toUtf8());
    if (const int left = svg->indexOf('{'); left >= 0) {
        std::fprintf(stderr, "%s: no text for %s in %s\n", qPrintable(icon.source),
                     svg->mid(left, svg->indexOf('}', left) + 1 - left).constData(),
                     qPrintable(icon.language));
        return false;
    }
    return true;
}

QByteArray IconPainter::drawing(const Icon& icon) {
    QByteArray svg = read(icon.source);
    svg.replace("currentColor", icon.ink.name(QColor::HexRgb).toUtf8());
    if (icon.stroke > 0)
        svg.replace("stroke-width=\"1.75\"",
                    "stroke-width=\"" + QByteArray::number(icon.stroke) + '"');
    if (!icon.language.isEmpty() && !putTexts(icon, &svg))
        return {};
    return svg;
}

QImage IconPainter::paint(const Icon& icon, int scale, double degrees) {
    QSvgRenderer svg(drawing(icon));
    if (!svg.isValid()) {
        std::fprintf(stderr, "%s: no usable drawing\n", qPrintable(icon.source));
        return {};
    }
    QImage image(icon.size * scale, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(scale);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    paintChip(&painter, icon);
    const QPointF middle(icon.size.width() / 2.0, icon.size.height() / 2.0);
    painter.translate(middle);
    painter.rotate(degrees);
    painter.translate(-middle);
    painter.setOpacity(icon.ink.alphaF());
    svg.render(&painter, glyphArea(icon, scale));
    return image;
}

}  // namespace orvelle::icons
