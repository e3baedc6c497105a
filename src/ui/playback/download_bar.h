#pragma once

#include <QTimer>

#include <memory>
#include <vector>

#include "device/worker_reaper.h"
#include "media/card/card_download.h"
#include "ui/widgets/widget.h"

class KvTUTKDevice;
class QLabel;
class QProgressBar;
class QPushButton;

namespace orvelle {

/// A download from a card, while there is one: how far it is, a button that pauses it and one that
/// cancels it. Hidden without one. Interface thread.
class DownloadBar : public KvWidget {
    Q_OBJECT

public:
    explicit DownloadBar(QWidget* parent);

    /// The device is borrowed until the download is over, or stop() returned.
    void start(KvTUTKDevice* device, std::vector<CardDownload::Stretch> stretches,
               const QString& path);
    /// Ends what runs, and leaves nothing of it behind. Nothing is told, and no disk waited for.
    void stop();
    bool isRunning() const { return m_download != nullptr; }

signals:
    void ended();  ///< before each of the two below, and after the user has cancelled it
    /// The file is whole; so many minutes of it were not on the card any more.
    void done(const QString& path, int missingMinutes);
    void failed(const QString& reason);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void refresh();
    void showState();
    void togglePause();
    QString stateText() const;
    void end();

    std::unique_ptr<CardDownload> m_download;
    WorkerReaper m_stopped;  ///< without a device; may still wait for their disk
    QTimer m_timer;
    QLabel* m_text;  ///< children, as all below
    QProgressBar* m_progress;
    QPushButton* m_pause;
    QPushButton* m_cancel;
};

}  // namespace orvelle
