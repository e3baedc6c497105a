#pragma once

#include <QByteArray>
#include <QObject>

#include <cstdint>

/// Base of the commands to a device.
class KvDeviceRequest : public QObject {
    Q_OBJECT
};

/// Base of what a device answers.
class KvDeviceResponse : public QObject {
    Q_OBJECT
};

/// One control message to a camera: a type of link/io_types.h and its payload as on the wire.
/// A value: copies share the bytes.
class KvTUTKRequest : public KvDeviceRequest {
    Q_OBJECT
public:
    KvTUTKRequest() = default;
    KvTUTKRequest(uint32_t type, const QByteArray& data) : m_type(type), m_data(data) {}
    KvTUTKRequest(const KvTUTKRequest& other) : KvTUTKRequest(other.m_type, other.m_data) {}
    KvTUTKRequest& operator=(const KvTUTKRequest& other);

    uint32_t type() const { return m_type; }
    const QByteArray& data() const { return m_data; }
    bool isValid() const { return !m_data.isEmpty() || m_type != 0; }

private:
    uint32_t m_type = 0;
    QByteArray m_data;
};

/// One control message from a camera; decode its payload with device/device_messages.h.
class KvTUTKResponse : public KvDeviceResponse {
    Q_OBJECT
public:
    KvTUTKResponse() = default;
    KvTUTKResponse(uint32_t type, const QByteArray& data) : m_type(type), m_data(data) {}
    KvTUTKResponse(const KvTUTKResponse& other) : KvTUTKResponse(other.m_type, other.m_data) {}
    KvTUTKResponse& operator=(const KvTUTKResponse& other);

    uint32_t type() const { return m_type; }
    const QByteArray& data() const { return m_data; }

private:
    uint32_t m_type = 0;
    QByteArray m_data;
};
