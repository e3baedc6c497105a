#include "device/command_threads.h"

#include <QDebug>

KvTUTKDeviceSendThread::KvTUTKDeviceSendThread(orvelle::CommandChannel& channel)
    : KvThread(QStringLiteral("device-send")), m_channel(channel) {}

void KvTUTKDeviceSendThread::run() {
    m_channel.doSend(*this);
    qDebug("KvTUTKDeviceRecvThread doSend() Ended");
}

KvTUTKDeviceRecvThread::KvTUTKDeviceRecvThread(orvelle::CommandChannel& channel)
    : KvThread(QStringLiteral("device-recv")), m_channel(channel) {}

void KvTUTKDeviceRecvThread::run() {
    m_channel.doRecv(*this);
    qDebug("KvTUTKDeviceRecvThread doRecv() Ended");
}
