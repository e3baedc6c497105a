#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <atomic>
#include <functional>
#include <memory>
#include <vector>

namespace orvelle {

/// Gathers the repaint requests of all video views.
///
/// A repaint of one view makes the toolkit compose its whole window again, so views that change
/// within one interval are repainted together. The first request after a quiet interval is served
/// at once, so that a single camera's picture is never held back. Lives on the interface thread,
/// shared by all views and gone with the last.
class RepaintTick : public QObject {
    Q_OBJECT
public:
    /// One view's share: its flag and what to do when its turn comes.
    struct Client {
        std::function<void()> repaint;    ///< interface thread
        std::function<bool()> isVisible;  ///< interface thread
        std::atomic<bool> isDirty{false};
    };

    /// Interface thread.
    static std::shared_ptr<RepaintTick> shared();
    RepaintTick();

    /// `client` stays borrowed until removed. Interface thread.
    void add(Client* client);
    void remove(Client* client);

    /// Marks the client and wakes the interface thread unless a wake-up is on its way. Any thread;
    /// the client must not be removed meanwhile.
    void request(Client& client);

protected:
    bool event(QEvent* event) override;

private:
    void serveOrWait();
    void serve();
    int intervalMs() const;

    // Interface thread.
    std::vector<Client*> m_clients;
    QElapsedTimer m_sinceServed;
    QTimer m_timer;

    /// Set from the first request until it is served; orders the clients' flags before it.
    std::atomic<bool> m_isWakePending{false};
};

}  // namespace orvelle
