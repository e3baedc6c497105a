#pragma once

#include <QTimer>

#include <memory>
#include <vector>

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
    /// Ends what runs, and leaves nothing of it behind. Nothing is told.
    void stop();
    bool isRunning() const { return m_download != nullptr; }

signals:
    /// The file is whole; so many minutes of it were not on the card any more.
    void done(const QString& path, int missingMinutes);
    void failed(const QString& reason);
    void ended();  ///< after each of the two, and after the user has cancelled it

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void refresh();
    void togglePause();
    QString stateText() const;
    void end();

    std::unique_ptr<CardDownload> m_download;
    QTimer m_timer;
    QLabel* m_text;  ///< children, as all below
    QProgressBar* m_progress;
    QPushButton* m_pause;
    QPushButton* m_cancel;
};

}  // namespace orvelle
