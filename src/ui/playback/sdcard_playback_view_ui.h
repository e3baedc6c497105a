#pragma once

#include <QWidget>

#include <array>
#include <optional>

#include "ui/widgets/loading_view.h"

class KvNoSdcardView;
class KvPushButton;
class KvVideoTimeLineView;
class KvWidget;
class QLabel;

namespace orvelle {
class DownloadBar;
class VideoSurface;
}  // namespace orvelle

/// The widgets of KvSDCardPlaybackView: a bar with the camera's name, the picture, and a bar with
/// the timeline. The bars stand beside the picture or, in full screen, lie on it.
class KvSDCardPlaybackViewUI : public QWidget {
    Q_OBJECT

public:
    /// In the order in which they take the focus.
    enum Button {
        kBack,
        kSound,
        kCalendar,
        kCapture,
        kDownload,
        kToLive,
        kFullscreen,
        kButtonCount,
    };

    explicit KvSDCardPlaybackViewUI(QWidget* view);
    ~KvSDCardPlaybackViewUI() override;

    void setName(const QString& name);
    void setStateText(const QString& state);
    void setClockText(const QString& time);
    /// What is seen, seconds since 1970: on the timeline and in words.
    void setMoment(int seconds);
    /// Minutes by which the camera's clock is east of UTC; its time is shown where it differs from
    /// this computer's.
    void setCameraZone(std::optional<int> minutesEast);

    /// Full screen: the picture has the whole place, with the bars on it while they are visible.
    void setOverlaid(bool overlaid);
    bool isOverlaid() const { return m_overlaid; }
    void setBarsVisible(bool visible);
    /// Whether the keyboard is at something in the bars.
    bool hasFocusInBars() const;
    bool isMouseInBars() const;

    /// Darkens the picture below a turning sign.
    void setLoadingShown(bool shown);
    bool isLoadingShown() const { return m_loadingView.isOver(); }
    /// A text in the middle of the picture; empty for none.
    void showNotice(const QString& text);
    /// In place of the picture and of what belongs to it.
    void setNoCardShown(bool shown);
    bool isNoCardShown() const { return m_noCardShown; }

    KvPushButton* button(Button button) const { return m_buttons.at(button); }
    /// Made at the first call: what it draws with takes a moment to find out.
    orvelle::VideoSurface* videoView();
    void blankPicture();
    KvVideoTimeLineView* timeLine() const { return m_timeLine; }
    orvelle::DownloadBar* downloadBar() const { return m_downloadBar; }
    KvNoSdcardView* noSdcardView() const { return m_noSdcardView; }

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void setUpLabels();
    void setUpButtons();
    KvPushButton* makeButton(QWidget* bar, const char* name, const char* key);
    void showBars();
    void layOut();
    void layOutTopBar();
    void layOutBottomBar();
    void placeNotice();
    void raiseControls();
    QRect pictureArea() const;
    QString momentText(int seconds) const;

    bool m_overlaid = false;
    bool m_barsVisible = true;  ///< without effect beside the picture
    bool m_noCardShown = false;
    QString m_name;
    std::optional<int> m_cameraZone;

    orvelle::VideoSurface* m_videoView = nullptr;  ///< children, as all below
    KvNoSdcardView* m_noSdcardView;
    QLabel* m_noticeLabel;
    KvWidget* m_topBar;
    KvWidget* m_bottomBar;
    QLabel* m_nameLabel;
    QLabel* m_stateLabel;
    QLabel* m_clockCaption;
    QLabel* m_clockLabel;
    QLabel* m_momentCaption;
    QLabel* m_momentLabel;
    KvVideoTimeLineView* m_timeLine;
    orvelle::DownloadBar* m_downloadBar;
    std::array<KvPushButton*, kButtonCount> m_buttons{};

    KvLoadingView m_loadingView;  ///< a child only while it is shown
};
