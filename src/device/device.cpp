#include "device/device.h"

#include <QDebug>

void KvDevice::setName(const QString&) {}

void KvDevice::setUid(const QString&) {}

bool KvDevice::operator==(const KvDevice& other) const {
    qDebug("KvDevice operator ==");
    return equals(&other);
}
