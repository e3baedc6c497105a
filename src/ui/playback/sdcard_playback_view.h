#pragma once

#include <QDateTime>
#include <QTimer>
#include <QWidget>

#include <atomic>
#include <cstdint>
#include <memory>

#include "media/stages/playback_end.h"
#include "ui/playback/card_list.h"
#include "ui/playback/card_playing.h"
#include "ui/playback/moment_choice.h"
#include "ui/playback/sdcard_playback_view_ui.h"
#include "ui/widgets/clicker.h"
#include "ui/widgets/toast.h"

class KvCalendarDialog;
class KvTUTKDevice;
class KvTUTKPlayer;
class KvTUTKResponse;

namespace orvelle {
class FullScreenBars;
}

/// The recordings on one camera's memory card: a timeline and a calendar to choose from, and the
/// picture of what is chosen, which goes on from file to file.
///
///     no device -> asks for the card -> no card
///                                    -> asks for the month -> plays the newest, then what is
///                                    chosen
///
/// Whatever goes wrong leaves the last picture with a text on it, until the user chooses anew.
/// Interface thread; the player's and the device's threads reach it through its signals only.
class KvSDCardPlaybackView : public QWidget {
    Q_OBJECT

public:
    explicit KvSDCardPlaybackView(QWidget* parent = nullptr);
    ~KvSDCardPlaybackView() override;

    /// Borrowed; shows what is on its card. With null, or one that is not connected, everything of
    /// the former one has ended when this returns.
    void setDevice(KvTUTKDevice* device);
    KvTUTKDevice* device() const { return m_device; }
    bool isDownloading() const;

    /// What the full-screen button shows; the window itself is the owner's.
    bool isFullscreen() const;
    void exitsFullscreen();

signals:
    void clickBackButton();
    void updateMarksSignal();
    void updateSDCardSignal();
    void hideLoadingViewSignal();
    void updateTimeLineViewSignal(double seconds);
    void playNextSignal();
    void playFailedSignal();
    /// Whole runs of files, which are many only once they are taken apart.
    void updateVideoInfo(const QVector<KvTimeLineMark>& runs);
    void requestFullscreen(bool fullscreen);

protected:
    bool event(QEvent* event) override;
    bool focusNextPrevChild(bool next) override;
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;

    /// The ways out, for tests to replace. False or -1: refused at once.
    virtual bool sendRequest(uint32_t type, const QByteArray& payload);
    virtual int startPlayer(const QDateTime& start);
    virtual orvelle::PlaybackEnd playbackEnd() const;
    /// In which a camera answers, if at all.
    virtual int answerMs() const { return 10000; }
    /// Of a steady clock.
    virtual qint64 nowMs() const;

    /// On the player's and the device's threads.
    void handlePlayerEvent(int32_t event, double seconds);
    void handleResponse(const KvTUTKResponse& response);

    KvSDCardPlaybackViewUI* ui() const { return m_ui; }

private slots:
    void _onUpdateVideoInfo(const QVector<KvTimeLineMark>& runs);
    void _onClickBackButton(bool);
    void _onClickCalendarButton(bool);
    void _onClickCalendar(QDate date);
    void _onSelectedVideoTime(int time);
    void _onClickPlay(bool checked);
    void _onClickPrev();
    void _onClickNext();
    void _onClickCapture(bool);
    void _onClickDownload(bool);
    void _onClickVolume(bool);
    void _onClickFull(bool);
    void _doUpdateTimeLineView(double seconds);
    void _doUpdateSDCard();
    void _doPlayNext();
    void _doUpdateMarks();
    void _doHideLoadingView();
    void _doPlayFailed();
    void _invokeDateTimeTimer();
    void _onDoubleClickVideoView();
    int _findDateTimeIndex(const QDateTime& time) const;
    int _findDateIndex(const QDate& date) const;

private:
    static int32_t onPlayerEvent(void* user, int32_t event, double a, double b);
    static void onResponse(void* user, KvTUTKResponse* response);
    template <class Work>
    void post(Work work);

    void connectSignals();
    void connectButtons();
    void releaseDevice();
    void openCard();
    void requestFiles(const QDate& day);
    void lookFor(orvelle::Recordings::Wish wish, qint64 time);
    void takeStart();
    void onOverview(const orvelle::CardOverviewReply& overview);
    void onZone(int minutesEast);
    void showMarks();
    void fillCalendar();
    void onNoAnswer();
    void onConnectionChanged(bool isOnline);
    void showNoCard();
    void showState();

    /// From `from`, seconds since 1970, or, where that is not in the file, from its start.
    bool playOnRequest(int index, int from = 0);
    void playFile(int index, int from = 0);
    void playChoice(int time);
    bool isTimeLineTaken() const;
    void playAgain();
    void playDay(const QDate& day);
    KvCalendarDialog* calendar();
    bool isMarkKey(QKeyEvent* event);
    void download(const orvelle::TimeSpan& span);
    void tellDownloaded(const QString& path, int missingMinutes);
    void updateDownloadButton();
    bool agreesToLeave();
    void stopPlayer();
    void failWith(const QString& reason);
    void awaitAnswer();
    bool isAwaitingAnswer() const;
    void followDryness();
    int indexAfterEnd() const;
    bool skipsMissing();
    void updateCover();
    void applyVolume();
    void setFullscreen(bool fullscreen);
    bool passToTimeLine(QKeyEvent* event);

    KvSDCardPlaybackViewUI* const m_ui;     ///< child
    orvelle::FullScreenBars* const m_bars;  ///< child
    KvTUTKDevice* m_device = nullptr;       ///< borrowed; the manager owns it
    orvelle::CardList m_list;
    orvelle::CardPlaying m_playing;
    orvelle::MomentChoice m_choice;
    bool m_wasOnline = false;
    bool m_wasLost = false;     ///< what played, with the connection
    bool m_hasPicture = false;  ///< one of this camera's is on the screen
    bool m_isPassingKey = false;
    bool m_isSkipping = false;  ///< recordings that cannot be played, which was told
    QTimer m_clockTimer;
    QTimer m_coverTimer;   ///< runs while a picture is held without a cover
    QTimer m_answerTimer;  ///< runs while something is awaited from the camera
    KvClicker m_clicker;
    KvToast m_toast;
    KvCalendarDialog* m_calendar = nullptr;  ///< child, made when first needed

    std::atomic<int> m_totalMiB{0};  ///< set by the device's thread

    std::unique_ptr<KvTUTKPlayer> m_player;  ///< last, so that it goes first
};
