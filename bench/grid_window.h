#pragma once

#include <QObject>

#include <cstdint>
#include <memory>
#include <vector>

#include "ui/main/main_window.h"

class KvDevice;
class KvDeviceGroup;
class KvDevicePlayerView;

namespace orvelle::bench {

class PaintWatch;

/// The bars that the mouse pointer woke are gone by then.
constexpr int kBarsGoneMs = 4000;

/// The client's main window with the cameras in the list, each by itself and several also as one
/// group, which it shows. Interface thread.
class GridWindow : public QObject {
public:
    /// The devices are the manager's.
    explicit GridWindow(const std::vector<KvDevice*>& devices);
    ~GridWindow() override;

    /// Shows the window and clicks the entry; false when not every tile showed pictures within
    /// `timeoutMs`.
    bool play(int timeoutMs);
    /// False without a window manager that does it.
    bool maximise();

    MainWindow& window() { return m_window; }
    /// Those with a camera.
    const std::vector<KvDevicePlayerView*>& tiles() const { return m_tiles; }
    /// By tile: new pictures that reached the screen since play(). A picture that was replaced
    /// before the window was drawn is not among them.
    std::vector<uint64_t> picturesShown() const;
    /// How often the whole window was put together for the screen.
    uint64_t compositions() const { return m_compositions; }

protected:
    bool eventFilter(QObject* window, QEvent* event) override;

private:
    KvDeviceGroup* const m_entry;  ///< owned by the manager
    MainWindow m_window;
    std::vector<KvDevicePlayerView*> m_tiles;
    std::vector<std::unique_ptr<PaintWatch>> m_watches;
    uint64_t m_compositions = 0;
};

}  // namespace orvelle::bench
