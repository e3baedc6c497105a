#pragma once

#include <QObject>
#include <QProcess>
#include <QTemporaryDir>

#include <memory>

#include "support/camera_process.h"

/// The client program as a user starts and ends it.
class ClientProcessTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void cleanup();
    void client_quitsInOrder_whenToldToEnd_data();
    void client_quitsInOrder_whenToldToEnd();
    void secondCopy_isRefused_whileTheFirstRuns();

private:
    std::unique_ptr<QProcess> startClient() const;
    static bool waitForOutput(QProcess& client, const QByteArray& text);

    QTemporaryDir m_home;
    orvelle::test::CameraProcess m_camera{{QStringLiteral("--demo"), QStringLiteral("--uid"),
                                           QStringLiteral("CLIENT1"), QStringLiteral("--size"),
                                           QStringLiteral("360p")}};
};
