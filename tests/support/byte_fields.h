#pragma once

#include <QByteArray>
#include <QtEndian>

namespace orvelle::test {

/// Overwrites four bytes of `bytes` with `number`, little-endian.
inline void putU32(QByteArray& bytes, int offset, quint32 number) {
    number = qToLittleEndian(number);
    bytes.replace(offset, sizeof number, reinterpret_cast<const char*>(&number), sizeof number);
}

}  // namespace orvelle::test
