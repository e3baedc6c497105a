#pragma once

#include <QObject>
#include <QTimer>

class KvDevicePlayer;
class KvPushButton;
class KvTUTKDevice;
class QSlider;

namespace orvelle {

/// How loud a tile is: its button, its slider, what its player plays and what its camera
/// remembers. Interface thread.
class TileSound : public QObject {
    Q_OBJECT

public:
    /// All are borrowed and outlive what is done here; `button` owns this.
    TileSound(KvDevicePlayer& player, KvPushButton* button, QSlider* slider);

    /// Of a camera that is bound: it begins with what is remembered of it, or, with `isSilent`,
    /// with none, and nothing is remembered. Null: none, the volume stays.
    void setDevice(KvTUTKDevice* device, bool isSilent);
    bool isOn() const { return m_volume > 0.0; }
    double volume() const { return m_volume; }
    /// The same, remembered: 0.0 is silence, 1.0 is full.
    void choose(double volume);
    /// On or off.
    void toggle();
    /// Off, for as long as another tile alone is to be heard.
    void silence() { apply(0.0); }

signals:
    void changed();
    /// This tile alone is to be heard.
    void onlyThisAsked();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void apply(double volume);
    void save();

    KvDevicePlayer& m_player;
    KvPushButton* const m_button;
    QSlider* const m_slider;
    KvTUTKDevice* m_device = nullptr;  ///< whose record takes what is chosen
    double m_volume = 0.0;
    QTimer m_saveTimer;  ///< a slider moves in many steps
};

}  // namespace orvelle
