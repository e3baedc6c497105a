#include <QtTest>

#include "device/tutk_device.h"
#include "fake_device.h"
#include "link/io_types.h"
#include "media/player/base_player.h"
#include "support/byte_fields.h"
#include "support/suites.h"
#include "ui/dialogs/alert_dialog.h"
#include "ui/playback/no_sdcard_view.h"
#include "ui/playback/sdcard_playback_view.h"
#include "ui/playback/video_time_line_view.h"
#include "ui/preview/device_player_view.h"
#include "ui/preview/devices_preview.h"
#include "ui/preview/devices_preview_ui.h"
#include "ui/widgets/click_label.h"
#include "ui/widgets/push_button.h"
#include "ui/widgets/text.h"

using UI = KvSDCardPlaybackViewUI;

namespace {

/// Connected as long as a test wants, without a link.
class Camera : public KvTUTKDevice {
public:
    bool isConnected() const override {
        const bool isLost = askedUntilLost == 0;
        askedUntilLost -= askedUntilLost > 0;
        return isOn && !isLost;
    }
    bool isWorking() const override { return isOn; }

    bool isOn = true;
    mutable int askedUntilLost = -1;  ///< -1 for never
};

/// Keeps what would go to the camera, and takes the camera's and the player's part.
class View : public KvSDCardPlaybackView {
public:
    View() {
        resize(800, 600);
        show();
        setDevice(&camera);
    }
    ~View() override { setDevice(nullptr); }

    Camera camera;
    QVector<uint32_t> asked;
    QVector<int> months;  ///< the last ones of the lists asked for
    QVector<qint64> played;
    qint64 clock = 0;
    int timeoutMs = 10000;
    orvelle::PlaybackEnd end = orvelle::PlaybackEnd::kNone;

    void answer(uint32_t type, const QByteArray& payload) {
        handleResponse(KvTUTKResponse(type, payload));
        settle();
    }
    void answerCard(quint32 totalMiB) {
        QByteArray payload(56, '\0');
        orvelle::test::putU32(payload, 40, totalMiB);
        answer(IOTYPE_USER_IPCAM_DEVINFO_RESP, payload);
    }
    void answerList(quint32 start, quint32 count) {
        QByteArray payload(12, '\0');
        payload[0] = 1;
        orvelle::test::putU32(payload, 4, start);
        orvelle::test::putU32(payload, 8, count);
        answer(IOTYPE_USER_IPCAM_LISTEVENT_VBK_RESP, payload);
    }
    void tick(qint64 ms) {
        clock += ms;
        QMetaObject::invokeMethod(this, "_invokeDateTimeTimer");
    }
    /// A card with files from this morning's first minutes on, the last of which plays.
    void openCard(quint32 files) {
        answerCard(30000);
        answerList(first(), files);
    }
    static quint32 first() { return quint32(QDate::currentDate().startOfDay().toSecsSinceEpoch()); }
    void tell(int event) {
        handlePlayerEvent(event, 0.0);
        settle();
    }
    void settle() {
        // An answer's slot raises a signal of its own.
        QCoreApplication::sendPostedEvents(this);
        QCoreApplication::sendPostedEvents(this);
    }
    void click(const char* accessibleName) {
        const QString name = orvelle::text(accessibleName);
        for (QPushButton* button : findChildren<QPushButton*>())
            if (button->accessibleName() == name && button->isVisible())
                return QTest::mouseClick(button, Qt::LeftButton);
        QFAIL(accessibleName);
    }
    /// The file's number that was last asked to play, -1 for none.
    int lastPlayed() const { return played.isEmpty() ? -1 : int(played.last() - first()) / 60; }
    QStringList texts() const {
        QStringList shown;
        for (const QLabel* label : findChildren<QLabel*>())
            if (label->isVisible())
                shown << label->text();
        return shown;
    }
    using KvSDCardPlaybackView::handlePlayerEvent;
    using KvSDCardPlaybackView::ui;

protected:
    bool sendRequest(uint32_t type, const QByteArray& payload) override {
        asked << type;
        if (type == IOTYPE_USER_IPCAM_LISTEVENT_VBK_REQ)
            months << payload.at(14);
        return true;
    }
    int startPlayer(const QDateTime& start) override {
        played << start.toSecsSinceEpoch();
        return 0;
    }
    orvelle::PlaybackEnd playbackEnd() const override { return end; }
    int answerMs() const override { return timeoutMs; }
    qint64 nowMs() const override { return clock; }
};

}  // namespace

class SDCardPlaybackViewTest : public QObject {
    Q_OBJECT

private slots:
    void newestFile_playsOnce_afterItsOwnRequests() {
        View view;
        view.answerList(View::first(), 5);
        QVERIFY(view.played.isEmpty());
        QVERIFY(view.ui()->isLoadingShown());
        view.answerCard(30000);
        view.answerCard(30000);
        QCOMPARE(view.asked, (QVector<uint32_t>{
                                 IOTYPE_USER_IPCAM_DEVINFO_REQ, IOTYPE_USER_IPCAM_LISTEVENT_VBK_REQ,
                                 IOTYPE_CARD_OVERVIEW_REQ, IOTYPE_USER_IPCAM_GET_TIMEZONE_REQ}));
        QCOMPARE(view.months, QVector<int>{QDate::currentDate().month()});
        view.answerList(View::first(), 5);
        QCOMPARE(view.lastPlayed(), 4);
        view.answerList(View::first(), 9);
        QCOMPARE(view.played.size(), 1);
        QCOMPARE(view.ui()->timeLine()->marks().size(), 5);
        const QDate month(QDate::currentDate().year(), QDate::currentDate().month(), 1);
        QCOMPARE(qint64(view.ui()->timeLine()->minimum()),
                 month.addMonths(-1).startOfDay().toSecsSinceEpoch());
        QVERIFY(view.ui()->isLoadingShown());
        view.tell(KvBasePlayerFirstFrame);
        QVERIFY(!view.ui()->isLoadingShown());
    }

    void clicksWithinASecond_moveByOneFile() {
        View view;
        view.openCard(9);
        view.click("previous_recording");
        view.click("previous_recording");
        QCOMPARE(view.lastPlayed(), 7);
        view.clock += 1000;
        view.click("previous_recording");
        QCOMPARE(view.lastPlayed(), 6);
        view.tell(KvBasePlayerVideoEnded);
        view.tell(KvBasePlayerVideoEnded);
        QCOMPARE(view.lastPlayed(), 8);
        view.click("next_recording");
        view.clock += 1000;
        view.click("next_recording");
        view.click("next_recording");
        QCOMPARE(view.months.size(), 2);
        view.answerList(View::first(), 9);
        QVERIFY(view.texts().contains(orvelle::text("no_more_files")));
        QVERIFY(view.ui()->timeLine()->isPlayChecked());
        QCOMPARE(view.played.size(), 5);
    }

    void end_asksForNewerFiles() {
        const QString text = orvelle::text("no_more_files");
        View view;
        view.openCard(9);
        view.tell(KvBasePlayerFirstFrame);
        view.tell(KvBasePlayerVideoEnded);
        QVERIFY(!view.ui()->timeLine()->isPlayChecked() && !view.texts().contains(text));
        view.answerList(View::first(), 11);
        QCOMPARE(view.lastPlayed(), 9);
        // Dropped behind the end: from there on.
        emit view.ui()->timeLine()->selectedTime(int(View::first()) + 11 * 60 + 30);
        view.answerList(View::first(), 12);
        QCOMPARE(view.played.last(), qint64(View::first()) + 11 * 60 + 30);
        view.tell(KvBasePlayerFirstFrame);
        view.timeoutMs = 1;
        view.tell(KvBasePlayerVideoEnded);
        QTRY_VERIFY(view.texts().contains(text));
        QCOMPARE(view.played.size(), 3);
    }

    void playing_runsOnIntoTheNextFile() {
        // A camera that runs on, to the end of the fourth file; one that ended the third where the
        // fourth begins; one that ended within the third.
        for (const auto& [endedAt, played, second] :
             {std::tuple(119.9, 5, 0), {61.2, 4, 1}, {59.9, 4, 0}}) {
            View view;
            view.openCard(9);
            view.clock += 1000;
            emit view.ui()->timeLine()->selectedTime(int(View::first()) + 3 * 60);
            view.tell(KvBasePlayerFirstFrame);
            for (double seconds = 0.9; seconds <= endedAt; seconds += 1.0) {
                view.handlePlayerEvent(KvBasePlayerProgress, seconds);
                view.settle();
            }
            view.handlePlayerEvent(KvBasePlayerProgress, endedAt);
            view.tell(KvBasePlayerVideoEnded);
            QCOMPARE(view.played.last(), qint64(View::first()) + played * 60 + second);
        }
    }

    void missingFiles_areSkipped_andToldOnce() {
        View view;
        view.openCard(9);
        view.clock += 1000;
        emit view.ui()->timeLine()->selectedTime(int(View::first()) + 5 * 60);
        view.end = orvelle::PlaybackEnd::kMissing;
        const QString text = orvelle::text("the_recording_could_not_be_played");
        view.tell(KvBasePlayerOpenFailed);
        QVERIFY(view.texts().contains(text));
        view.tell(KvBasePlayerOpenFailed);
        QCOMPARE(view.lastPlayed(), 7);
        view.tell(KvBasePlayerFirstFrame);
        QVERIFY(view.ui()->timeLine()->isPlayChecked());
        view.clock += 1000;
        view.click("next_recording");
        view.tell(KvBasePlayerOpenFailed);  // the last one
        QVERIFY(!view.ui()->timeLine()->isPlayChecked());
    }

    void slowPath_showsLoading_untilItGoesOn() {
        View view;
        view.openCard(9);
        view.tell(KvBasePlayerFirstFrame);
        view.handlePlayerEvent(KvBasePlayerWaiting, 1.0);
        view.settle();
        QTRY_VERIFY(view.ui()->isLoadingShown());
        view.handlePlayerEvent(KvBasePlayerWaiting, 0.0);
        view.settle();
        QVERIFY(!view.ui()->isLoadingShown() && view.ui()->timeLine()->isPlayChecked());
    }

    void present_isRefreshedQuietly() {
        View view;
        view.openCard(9);
        view.tell(KvBasePlayerFirstFrame);
        view.tick(59999);
        QCOMPARE(view.months.size(), 1);
        view.tick(1);
        QCOMPARE(view.months, (QVector<int>{QDate::currentDate().month(), view.months.first()}));
        QTest::qWait(0);
        QVERIFY(!view.ui()->isLoadingShown());
        view.answerList(View::first(), 10);
        QCOMPARE(view.ui()->timeLine()->marks().size(), 10);
        QCOMPARE(view.played.size(), 1);
        // What comes much later belongs to nothing any more.
        view.tick(60000);
        view.tick(10000);
        view.answerList(View::first(), 11);
        QCOMPARE(view.ui()->timeLine()->marks().size(), 10);
        view.ui()->setMoment(int(View::first()) - 40 * 86400);
        view.tick(60000);
        QCOMPARE(view.months.size(), 3);
    }

    void lastChoiceWithinASecond_isPlayedAfterIt() {
        View view;
        view.openCard(9);
        view.tell(KvBasePlayerFirstFrame);
        for (const int minute : {1, 3, 5})
            emit view.ui()->timeLine()->selectedTime(int(View::first()) + minute * 60 + 7);
        view.tell(KvBasePlayerFirstFrame);
        view.handlePlayerEvent(KvBasePlayerProgress, 30.0);
        view.settle();
        QCOMPARE(view.ui()->timeLine()->value(), int(View::first()) + 5 * 60 + 7);
        QCOMPARE(view.lastPlayed(), 1);
        view.clock += 1000;
        QTRY_COMPARE(view.played.size(), 3);
        QCOMPARE(view.played.last(), qint64(View::first()) + 5 * 60 + 7);
    }

    void heldKey_isForgotten_whenItIsLetGoElsewhere() {
        for (const auto type : {QEvent::FocusOut, QEvent::WindowDeactivate}) {
            View view;
            view.openCard(9);
            QTest::keyPress(&view, Qt::Key_Right);
            QVERIFY(view.ui()->timeLine()->isDragging());
            QFocusEvent left(QEvent::FocusOut);
            QEvent deactivated(type);
            QCoreApplication::sendEvent(&view, type == QEvent::FocusOut ? &left : &deactivated);
            QVERIFY(!view.ui()->timeLine()->isDragging());
        }
    }

    void pause_neitherSilencesTheWait_norTheEnd() {
        const QString reason = orvelle::text("the_camera_does_not_answer");
        View view;
        view.openCard(9);
        view.click("previous_recording");
        view.tell(KvBasePlayerFirstFrame);
        view.timeoutMs = 1;
        QMetaObject::invokeMethod(&view, "_onClickCalendar", Q_ARG(QDate, QDate(2020, 2, 2)));
        view.click("pause");
        QTRY_VERIFY(view.texts().contains(reason));
        QVERIFY(!view.ui()->isLoadingShown());
        view.tell(KvBasePlayerVideoEnded);
        QCOMPARE(view.lastPlayed(), 7);
        view.click("play");
        QCOMPARE(view.lastPlayed(), 8);
    }

    void pause_beforeTheFirstPicture_stillAwaitsIt() {
        View view;
        view.openCard(9);
        view.timeoutMs = 1;
        view.click("previous_recording");
        view.click("pause");
        QTRY_VERIFY(view.texts().contains(orvelle::text("the_camera_does_not_answer")));
        QVERIFY(!view.ui()->isLoadingShown());
    }

    void eventsOfTheFileBefore_areDropped() {
        View view;
        view.openCard(9);
        view.handlePlayerEvent(KvBasePlayerVideoEnded, 0.0);
        view.handlePlayerEvent(KvBasePlayerOpenFailed, 0.0);
        view.handlePlayerEvent(KvBasePlayerFirstFrame, 0.0);
        view.handlePlayerEvent(KvBasePlayerProgress, 30.0);
        view.click("previous_recording");
        view.settle();
        QCOMPARE(view.lastPlayed(), 7);
        QVERIFY(view.ui()->isLoadingShown());
        QCOMPARE(view.ui()->timeLine()->value(), int(View::first()) + 7 * 60);
        view.tell(KvBasePlayerFirstFrame);
        view.handlePlayerEvent(KvBasePlayerProgress, 29.6);
        view.settle();
        QCOMPARE(view.ui()->timeLine()->value(), int(View::first()) + 7 * 60 + 30);
    }

    void picture_isHeldBetweenFiles() {
        View view;
        view.openCard(1);
        view.tell(KvBasePlayerFirstFrame);
        emit view.ui()->timeLine()->selectedTime(int(View::first()) + 30);
        // From the chosen moment on, not from the file's start.
        QCOMPARE(view.played.last(), qint64(View::first()) + 30);
        QVERIFY(!view.ui()->isLoadingShown());
        QTRY_VERIFY(view.ui()->isLoadingShown());
    }

    void space_pausesAndGoesOn() {
        View view;
        view.openCard(3);
        QTest::keyClick(&view, Qt::Key_Space);
        QVERIFY(!view.ui()->timeLine()->isPlayChecked());
        QTest::keyClick(&view, Qt::Key_Space);
        QVERIFY(view.ui()->timeLine()->isPlayChecked());
        QCOMPARE(view.played.size(), 1);
    }

    void failure_hasItsOwnText() {
        using orvelle::PlaybackEnd;
        for (const auto end : {PlaybackEnd::kRefused, PlaybackEnd::kLost}) {
            const QString reason =
                orvelle::text(end == PlaybackEnd::kLost ? "the_connection_to_the_camera_was_lost"
                                                        : "the_recording_could_not_be_played");
            View view;
            view.openCard(9);
            view.end = end;
            view.handlePlayerEvent(KvBasePlayerOpenFailed, 0.0);
            view.tell(KvBasePlayerVideoEnded);
            QVERIFY(view.texts().contains(reason));
            QVERIFY(!view.ui()->timeLine()->isPlayChecked());
            QCOMPARE(view.played.size(), 1);
            // It asks whether the card is still there, which changes nothing else.
            QCOMPARE(view.asked.last(), uint32_t(IOTYPE_USER_IPCAM_DEVINFO_REQ));
            view.answerCard(30000);
            QVERIFY(view.texts().contains(reason));
            QCOMPARE(view.months.size(), 1);
            QTest::keyClick(&view, Qt::Key_Space);
            QCOMPARE(view.lastPlayed(), 8);
            QVERIFY(!view.texts().contains(reason));
        }
    }

    void offlineCamera_isTold_andComesBack() {
        View view;
        view.openCard(9);
        view.camera.isOn = false;
        QTRY_VERIFY(view.texts().contains(orvelle::text("camera_offline")));
        QVERIFY(!view.ui()->timeLine()->isPlayChecked());
        view.camera.isOn = true;
        QTRY_VERIFY(!view.texts().contains(orvelle::text("camera_offline")));
        view.openCard(9);
        QCOMPARE(view.lastPlayed(), 8);
    }

    void playing_goesOnWhereItWas_whenCameraOrCardAreBack_data() {
        QTest::addColumn<bool>("isCard");
        QTest::addColumn<bool>("isPaused");
        QTest::newRow("camera") << false << false;
        QTest::newRow("card") << true << false;
        QTest::newRow("camera, paused") << false << true;
    }

    void playing_goesOnWhereItWas_whenCameraOrCardAreBack() {
        QFETCH(bool, isCard);
        QFETCH(bool, isPaused);
        View view;
        view.openCard(9);
        view.click("previous_recording");
        view.tell(KvBasePlayerFirstFrame);
        view.handlePlayerEvent(KvBasePlayerProgress, 20.0);
        view.settle();
        if (isPaused)
            view.click("pause");
        if (isCard) {
            view.answerCard(0);
            QVERIFY(view.ui()->isNoCardShown());
            // It is looked for by itself.
            view.asked.clear();
            view.tick(2000);
            QCOMPARE(view.asked, QVector<uint32_t>{IOTYPE_USER_IPCAM_DEVINFO_REQ});
        } else {
            view.camera.isOn = false;
            view.tick(0);
            view.camera.isOn = true;
            view.tick(0);
        }
        QCOMPARE(view.played.size(), 2);
        view.openCard(9);
        QCOMPARE(view.played.size(), isPaused ? 2 : 3);
        QCOMPARE(view.played.last(), qint64(View::first()) + 7 * 60 + (isPaused ? 0 : 20));
        QVERIFY(!view.ui()->isNoCardShown());
    }

    void refusal_isNotTriedAgainByItself() {
        View view;
        view.openCard(9);
        view.end = orvelle::PlaybackEnd::kRefused;
        view.tell(KvBasePlayerOpenFailed);
        view.answerCard(30000);
        QCOMPARE(view.played.size(), 1);
    }

    void cardThatTakesNothing_saysSo() {
        View view;
        view.openCard(9);
        for (const auto& [flags, key] : {std::pair<char, const char*>{2, "card_is_read_only"},
                                         {4, "card_is_full"},
                                         {0, nullptr}}) {
            QByteArray overview(16, '\0');
            overview[0] = flags;
            view.answer(IOTYPE_CARD_OVERVIEW_RESP, overview);
            const QString texts = view.texts().join(QLatin1Char('|'));
            for (const char* each : {"card_is_read_only", "card_is_full"})
                QCOMPARE(texts.contains(orvelle::text(each)), key && !qstrcmp(each, key));
        }
    }

    void pulledCard_endsPlaying() {
        View view;
        view.openCard(9);
        view.answerCard(0);
        QVERIFY(view.ui()->isNoCardShown());
        QVERIFY(view.texts().contains(orvelle::text("no_sdcard")));
        QVERIFY(view.ui()->timeLine()->marks().isEmpty());
        QTest::keyClick(&view, Qt::Key_Space);
        view.tell(KvBasePlayerVideoEnded);
        QCOMPARE(view.played.size(), 1);
        QSignalSpy back(&view, &KvSDCardPlaybackView::clickBackButton);
        QTest::mouseClick(view.ui()->noSdcardView()->backLabel(), Qt::LeftButton);
        QCOMPARE(back.count(), 1);
        QVERIFY(!view.device());
    }

    void wayBack_isNeverCovered() {
        View view;
        view.answerCard(30000);
        view.click("previous_recording");
        QVERIFY(view.texts().contains(orvelle::text("no_more_files")));
        view.answerCard(0);
        QVERIFY(!view.texts().contains(orvelle::text("no_more_files")));
        const auto isFree = [&view](const QWidget* way) {
            const QPoint middle = way->mapTo(&view, way->rect().center());
            return way->isVisible() && view.childAt(middle) == way;
        };
        QVERIFY(isFree(view.ui()->noSdcardView()->backLabel()));
        // Text and sign both stand in the middle.
        view.camera.isOn = false;
        view.tick(0);
        QVERIFY(!view.ui()->isNoCardShown());
        view.camera.isOn = true;
        view.tick(0);
        for (const bool isFull : {false, true}) {
            view.ui()->setOverlaid(isFull);
            QVERIFY(view.ui()->isLoadingShown() && isFree(view.ui()->button(UI::kBack)));
        }
    }

    void emptyList_isTold() {
        View view;
        view.openCard(0);
        QVERIFY(view.texts().contains(orvelle::text("no_recordings")));
        QVERIFY(view.played.isEmpty() && !view.ui()->isLoadingShown());
        view.answer(IOTYPE_USER_IPCAM_LISTEVENT_VBK_RESP, QByteArray("\0\1\0\0", 4));
        QVERIFY(view.ui()->isNoCardShown());
    }

    void removedCamera_isForgotten_whilePlaying() {
        View view;
        view.openCard(9);
        view.handlePlayerEvent(KvBasePlayerVideoEnded, 0.0);
        view.handlePlayerEvent(KvBasePlayerOpenFailed, 0.0);
        view.setDevice(nullptr);
        view.answerCard(30000);
        view.answerList(View::first(), 5);
        QCOMPARE(view.played.size(), 1);
        QCOMPARE(view.asked.size(), 4);
        QVERIFY(view.ui()->timeLine()->marks().isEmpty());
        QVERIFY(!view.texts().contains(orvelle::text("loading")));
        // The same one again starts anew.
        view.setDevice(&view.camera);
        view.openCard(2);
        QCOMPARE(view.lastPlayed(), 1);
    }

    void cardButton_opensThePage_andBackTheGrid() {
        Camera camera;
        const auto entry = orvelle::test::entryOf(camera, QStringLiteral("entry"));
        KvDevicesPreview grid;
        grid.resize(800, 600);
        grid.show();
        grid.setGroup(entry.get());
        const auto* grids = grid.findChild<KvDevicesPreviewUI*>();
        KvDevicePlayerView* tile = grids->tiles()[0];
        const KvSDCardPlaybackView* page = grids->playbackView();
        emit tile->clickSDCardButton(tile);
        QVERIFY(page->isVisible() && page->device() == &camera);
        QTest::mouseClick(page->findChild<KvSDCardPlaybackViewUI*>()->button(UI::kToLive),
                          Qt::LeftButton);
        QVERIFY(page->isHidden() && !page->device() && tile->device() == &camera);
        emit tile->clickSDCardButton(tile);
        grid.setGroup(nullptr);
        QVERIFY(page->isHidden() && !page->device() && !tile->device());
        // Lost between the click and the page.
        grid.setGroup(entry.get());
        camera.askedUntilLost = 1;
        bool isTold = false;
        QTimer::singleShot(0, &grid, [&] {
            auto* alert = qobject_cast<KvAlertDialog*>(QApplication::activeModalWidget());
            isTold = alert && tile->device() == &camera;
            if (alert)
                alert->reject();
        });
        emit tile->clickSDCardButton(tile);
        QVERIFY(isTold && page->isHidden() && tile->isVisible());
        grid.setGroup(nullptr);
    }
};

static const orvelle::test::RegisterSuite<SDCardPlaybackViewTest> kSDCardPlaybackViewTest;
#include "sdcard_playback_view_test.moc"
