#pragma once

#include <QTimer>
#include <QWidget>

#include <array>

#include "ui/widgets/loading_view.h"

class KvDeviceRecordView;
class KvPushButton;
class KvTUTKDevicePTZView;
class KvWidget;
class QLabel;
class QPushButton;

namespace orvelle {
class VideoSurface;
}

/// The widgets of KvDevicePlayerView: the picture fills the tile, everything else lies on it.
class KvDevicePlayerViewUI : public QWidget {
    Q_OBJECT
public:
    enum Mode { kCompact = 0, kLarge = 1 };
    /// In the order in which they take the focus.
    enum Button {
        kSdCard,
        kSettings,
        kClose,
        kPlay,
        kSound,
        kQuality,
        kRecord,
        kCapture,
        kPtz,
        kFullscreen,
        kButtonCount,
    };

    explicit KvDevicePlayerViewUI(QWidget* tile);
    ~KvDevicePlayerViewUI() override;

    void setMode(int mode);
    void setName(const QString& name);
    void setStateText(const QString& state);
    void setBarsVisible(bool visible);
    /// Whether the keyboard is at one of the bars' buttons.
    bool hasFocusInBars() const;
    bool isMouseInBars() const;
    /// Buttons that only some cameras have.
    void setButtonShown(Button button, bool shown);
    /// Buttons that do nothing at present look like it, and hand the keyboard to the tile.
    void setButtonEnabled(Button button, bool enabled);
    /// ":/resources/NAME_normal.png", in all states of the quality button.
    void setQualityImage(const QString& name);

    /// Darkens the picture below a turning sign and a text.
    void showCover(const QString& text);
    void hideCover();
    /// A text in the middle of the tile; empty for none. Below it, where it is offered, the button
    /// for a new device code.
    void showNotice(const QString& text, bool offersCode = false);
    /// Empty for none. The text changes with the next repaint of the picture.
    void setSpeedText(const QString& text);
    void setRecordShown(bool shown);
    /// The time, too, changes with the next repaint of the picture.
    void setRecordTime(double seconds) { m_recordSeconds = seconds; }

    KvPushButton* button(Button button) const { return m_buttons.at(button); }
    /// Made at the first call: what it draws with takes a moment to find out.
    orvelle::VideoSurface* videoView();
    void blankPicture();
    KvTUTKDevicePTZView* ptzView() const { return m_ptzView; }
    KvDeviceRecordView* recordView() const { return m_recordView; }
    QPushButton* codeButton() const { return m_codeButton; }

protected:
    void resizeEvent(QResizeEvent* event) override;

private slots:
    void _invokeDateTimeTimer();

private:
    struct Measures;

    void setUpLabels();
    void setUpButtons();
    KvPushButton* makeButton(QWidget* bar, const char* name, const char* key);
    Measures measures() const;
    void layOut();
    void layOutTopBar(const Measures& measures);
    void layOutBottomBar(const Measures& measures);
    int placeFromRight(std::initializer_list<Button> buttons, int right, const Measures& measures);
    void placeSpeedLabel();
    void placeRecordView();
    void placeNotice();
    void setCodeOffered(bool offered);
    void applySpeedText();
    void raiseControls();

    int m_mode = kCompact;
    bool m_barsVisible = false;
    std::array<bool, kButtonCount> m_shown;
    QString m_speedText;
    double m_recordSeconds = 0.0;
    QTimer m_dateTimeTimer;  ///< runs while the bars are shown
    QTimer m_speedTimer;

    orvelle::VideoSurface* m_videoView = nullptr;  ///< children, as all below
    QLabel* m_noticeLabel;
    QPushButton* m_codeButton;
    QLabel* m_speedLabel;
    KvTUTKDevicePTZView* m_ptzView;
    KvWidget* m_topBar;
    QLabel* m_nameLabel;
    QString m_name;
    QLabel* m_stateLabel;
    QLabel* m_dateTimeLabel;
    KvWidget* m_bottomBar;
    KvDeviceRecordView* m_recordView;
    std::array<KvPushButton*, kButtonCount> m_buttons{};

    KvLoadingView m_loadingView;  ///< a child only while it is shown
};
