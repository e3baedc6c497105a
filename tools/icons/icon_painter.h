#pragma once

#include <QImage>
#include <QJsonObject>
#include <QString>
#include <QStringList>

#include "icons/icon_list.h"

namespace orvelle::icons {

/// Draws icons from their SVG sources. Needs a QGuiApplication.
class IconPainter {
public:
    /// `directory` holds the drawings and texts.json.
    explicit IconPainter(const QString& directory);

    /// The icon at `scale` device pixels a pixel, turned by `degrees` around its middle.
    /// Prints one line and returns a null image when the drawing cannot be used.
    QImage paint(const Icon& icon, int scale, double degrees = 0);

    /// Every file that was read so far.
    QStringList filesRead() const { return m_filesRead; }

private:
    QByteArray read(const QString& name);
    QByteArray drawing(const Icon& icon);
    bool putTexts(const Icon& icon, QByteArray* svg);

    QString m_directory;
    QString m_textFont;
    QJsonObject m_texts;
    QStringList m_filesRead;
};

}  // namespace orvelle::icons
