#include "device/command_threads.h"

#include <QDebug>

KvTUTKDeviceSendThread::KvTUTKDeviceSendThread(KvTUTKDevice& device)
    : KvThread(QStringLiteral("device-send")), m_device(device) {}

void KvTUTKDeviceSendThread::run() {
    m_device.doSend(*this);
    qDebug("KvTUTKDeviceRecvThread doSend() Ended");
}

KvTUTKDeviceRecvThread::KvTUTKDeviceRecvThread(KvTUTKDevice& device)
    : KvThread(QStringLiteral("device-recv")), m_device(device) {}

void KvTUTKDeviceRecvThread::run() {
    m_device.doRecv(*this);
    qDebug("KvTUTKDeviceRecvThread doRecv() Ended");
}
