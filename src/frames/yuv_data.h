#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>

/// Base of the raw media records.
class KvMediaData {
public:
    virtual ~KvMediaData() = default;
};

/// A raw picture; sizes in pixels.
class KvYUVData : public KvMediaData {
public:
    KvYUVData(int width, int height) : m_width(width), m_height(height) {}
    int width() const { return m_width; }
    int height() const { return m_height; }

private:
    int m_width;
    int m_height;
};

/// A planar 4:2:0 picture of three tightly packed planes of its own: Y width x height, U and V
/// (width / 2) x (height / 2), halves truncated. Immutable once built, so it may be shared.
class KvYUV420P : public KvYUVData {
public:
    /// Copies three source planes. With `strides` (bytes, may be null) each row's smaller of
    /// stride and row width is copied and the rest of the plane is black; without, the planes
    /// are packed blocks. A negative stride walks upwards from the top row. Planes always have
    /// their full size; null planes, sizes below 1 and lack of memory give isNull().
    KvYUV420P(const uint8_t* const planes[3], int width, int height, const int strides[3]);

    bool isNull() const { return !m_y; }
    const uint8_t* y() const { return m_y.get(); }
    const uint8_t* u() const { return m_u.get(); }
    const uint8_t* v() const { return m_v.get(); }

private:
    struct Free {
        void operator()(uint8_t* bytes) const { std::free(bytes); }
    };
    using Plane = std::unique_ptr<uint8_t, Free>;
    static Plane copyPlane(const uint8_t* source, int width, int height, int stride, int black);

    Plane m_y, m_u, m_v;
};
