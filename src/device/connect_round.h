#pragma once

#include <QSet>
#include <QString>

class KvDevice;
class KvDeviceManager;
class KvThread;

namespace orvelle {

class ConnectAttempts;

/// One round of connecting. The network is asked once for all cameras; each that is missing is
/// connected as soon as it answers, beside all others; those that stay silent get a state that says
/// so, without an attempt of their own. So no camera waits for another, and there is no order.
///
/// Lives on the manager's thread. It takes the device lock for one camera at a time.
class ConnectRound {
public:
    /// Both are borrowed.
    ConnectRound(KvDeviceManager& manager, ConnectAttempts& attempts)
        : m_manager(manager), m_attempts(attempts) {}

    /// Ends early when nobody is missing any more, and within 20 ms when `thread` is stopped. What
    /// asking the network gave: 0, LINK_ER_NETWORK or LINK_ER_NO_SOCKET.
    int run(const KvThread& thread);

private:
    void begin();
    void answered(const QString& uid);
    void tell(const QSet<QString>& uids, int result);
    bool tryDevice(KvDevice& device);

    KvDeviceManager& m_manager;
    ConnectAttempts& m_attempts;
    QSet<QString> m_beyond;  ///< for which the link has no channel
    QSet<QString> m_silent;  ///< are missing and have not answered
    QSet<QString> m_tried;
};

}  // namespace orvelle
