#pragma once

#include <QDateTime>
#include <QString>

#include <cstdint>

struct AVFrame;

/// Writes three tightly packed 4:2:0 planes (limited range, chroma halves truncated) as a JPEG
/// file of the best quality; an odd last column or row is cut. Returns 0, or a negative value when
/// encoding or writing failed; `takenAt`, where valid, is noted in the file. An existing file is
/// replaced only by a complete new one. Blocks for the encoding (some 25 ms for 1920 x 1080). Any
/// thread.
int writeYUV420PJpeg(const uint8_t* y, const uint8_t* u, const uint8_t* v, int width, int height,
                     const QString& path, const QDateTime& takenAt = {});

/// The same for a decoded picture of any pixel format.
int writeFrameJpeg(const AVFrame* picture, const QString& path, const QDateTime& takenAt = {});
