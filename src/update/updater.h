#pragma once

#include <QNetworkAccessManager>
#include <QObject>
#include <QUrl>

#include <memory>

#include "update/update_info.h"

class QNetworkReply;

/// Asks the update server once for the newest build. A file that the maintainer did not sign counts
/// as none. Whatever goes wrong, it stays silent, apart from a line in the log. Interface thread.
class KvUpdater : public QObject {
    Q_OBJECT

public:
    explicit KvUpdater(QObject* parent = nullptr);
    ~KvUpdater() override;

    /// The update file's address, percent-encoded or not; its signature is beside it.
    void start(const QString& address);
    /// 0 asks with GET, 1 with POST.
    void check(int flag);

signals:
    /// The file was read; `info` lives as long as this object.
    void readUpdateInfo(KvUpdateInfo* info);

private slots:
    void onReplayFinished(QNetworkReply* reply);

private:
    void watch(QNetworkReply* reply);
    bool isGenuine() const;

    QUrl m_address;
    std::unique_ptr<QNetworkAccessManager> m_manager;  ///< from the first check on
    QByteArray m_file;                                 ///< empty until it is there, as the next
    QByteArray m_signature;
    KvUpdateInfo m_info;
};
