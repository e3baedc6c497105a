#pragma once

#include <QTimer>
#include <QWidget>

#include <array>

#include "ui/preview/tile_badge.h"

class KvDeviceRecordView;
class KvPushButton;
class KvTUTKDevicePTZView;
class KvWidget;
class QLabel;
class QPushButton;
class QSlider;

namespace orvelle {
class PictureNotice;
class VideoOverlay;
class VideoSurface;
class ZoomControl;
enum class PreviewKey;
}  // namespace orvelle

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

    void setMode(int mode);
    void setName(const QString& name);
    /// The state's word, and the colour of the dot before it.
    void setStateText(const QString& state, const QColor& dot);
    void setRecorded(bool isRecorded);
    void setHeard(bool isHeard);
    /// Buttons that only some cameras have.
    void setButtonShown(Button button, bool shown);
    /// Buttons that do nothing at present look like it, and hand the keyboard to the tile.
    void setButtonEnabled(Button button, bool enabled);
    /// ":/resources/NAME_normal.png", in all states of the quality button.
    void setQualityImage(const QString& name);
    /// Tooltip and accessible name.
    void setTip(Button button, const char* name, orvelle::PreviewKey key);

    /// Empty for none. The text changes with the next repaint of the picture.
    void setSpeedText(const QString& text);
    void setRecordShown(bool shown);
    /// So does the time while the picture moves, else at once.
    void setRecordTime(double seconds, bool isPictureMoving);

    KvPushButton* button(Button button) const { return m_buttons.at(button); }
    QSlider* volumeSlider() const { return m_volumeSlider; }
    /// Made at the first call: what it draws with takes a moment to find out.
    orvelle::VideoSurface* videoView();
    void blankPicture();
    KvTUTKDevicePTZView* ptzView() const { return m_ptzView; }
    KvDeviceRecordView* recordView() const { return m_recordView; }
    const orvelle::TileBadge* badge() const { return m_badge; }
    orvelle::VideoOverlay& overlay() const { return *m_overlay; }
    orvelle::PictureNotice* notice() const;
    orvelle::ZoomControl& zoom() const { return *m_zoom; }

protected:
    void resizeEvent(QResizeEvent* event) override;

private slots:
    void _invokeDateTimeTimer();

private:
    struct Measures;

    void setUpLabels();
    void setUpButtons();
    void setUpSlider();
    void setUpOverlay();
    KvPushButton* makeButton(QWidget* bar, const char* name, const char* key);
    Measures measures() const;
    void layOut();
    void layOutTopBar(const Measures& measures);
    void layOutBottomBar(const Measures& measures);
    int placeFromRight(std::initializer_list<Button> buttons, int right, const Measures& measures);
    int placeButton(Button button, int left, const Measures& measures);
    void placeBadge();
    void placeSpeedLabel();
    void placeRecordView();
    void showBadge(const orvelle::TileBadge::Facts& facts);
    void onBarsChanged(bool areShown);
    void applySpeedText();

    int m_mode = kCompact;
    std::array<bool, kButtonCount> m_shown;
    QString m_speedText;
    double m_recordSeconds = 0.0;
    QTimer m_dateTimeTimer;  ///< runs while the bars are shown
    QTimer m_speedTimer;

    orvelle::VideoSurface* m_videoView = nullptr;  ///< children, as all below
    orvelle::VideoOverlay* m_overlay;
    orvelle::ZoomControl* m_zoom;
    orvelle::TileBadge* m_badge;
    QLabel* m_speedLabel;
    KvTUTKDevicePTZView* m_ptzView;
    KvWidget* m_topBar;
    KvWidget* m_dot;
    QLabel* m_nameLabel;
    QString m_name;
    QLabel* m_stateLabel;
    QLabel* m_dateTimeLabel;
    KvWidget* m_bottomBar;
    QSlider* m_volumeSlider;
    KvDeviceRecordView* m_recordView;
    std::array<KvPushButton*, kButtonCount> m_buttons{};
};
