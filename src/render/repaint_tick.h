#pragma once

#include <QObject>
#include <QTimer>

#include <functional>
#include <memory>
#include <mutex>
#include <optional>

#include "render/repaint_plan.h"

namespace orvelle {

/// Repaints the video views that have new pictures, together by the rules of RepaintPlan. Lives
/// on the interface thread, shared by all views and gone with the last.
class RepaintTick : public QObject {
    Q_OBJECT
public:
    struct Client : RepaintPlan::View {
        std::function<void()> repaint;  ///< interface thread; fixed once added
    };

    /// Interface thread.
    static std::shared_ptr<RepaintTick> shared();
    RepaintTick();

    /// `client` stays borrowed until removed. Interface thread.
    void add(Client* client);
    void remove(Client* client);

    /// The client has a new picture: wakes the interface thread unless it is awake in time. Any
    /// thread; the client must not be removed meanwhile.
    void request(Client& client);
    /// The client's pictures are not seen at present. Any thread.
    void forget(Client& client);

protected:
    bool event(QEvent* event) override;

private:
    void serveOrWait();

    QTimer m_timer;  ///< interface thread

    std::mutex m_mutex;  ///< guards what follows and the plan's part of each client
    RepaintPlan m_plan;
    std::optional<int64_t> m_wakeMs;  ///< when the interface thread looks next, if at all
};

}  // namespace orvelle
