#include "ui/preview/tile_sound.h"

#include <QSlider>
#include <QWheelEvent>

#include "device/tutk_device.h"
#include "media/live/device_player.h"
#include "ui/logging.h"
#include "ui/preview/preview_keys.h"
#include "ui/widgets/push_button.h"
#include "ui/widgets/text.h"

namespace orvelle {

namespace {

constexpr int kSaveDelayMs = 500;
constexpr double kWheelStep = 0.1;

}  // namespace

TileSound::TileSound(KvDevicePlayer& player, KvPushButton* button, QSlider* slider)
    : QObject(button), m_player(player), m_button(button), m_slider(slider) {
    m_saveTimer.setSingleShot(true);
    m_saveTimer.setInterval(kSaveDelayMs);
    connect(&m_saveTimer, &QTimer::timeout, this, &TileSound::save);
    connect(slider, &QSlider::valueChanged, this, [this](int value) {
        if (value != qRound(m_volume * 100.0))
            choose(value / 100.0);
    });
    button->installEventFilter(this);
    apply(0.0);
}

void TileSound::setDevice(KvTUTKDevice* device, bool isSilent) {
    save();
    m_device = isSilent ? nullptr : device;
    if (device)
        apply(isSilent ? 0.0 : device->volume());
}

void TileSound::apply(double volume) {
    if (volume != m_volume)
        qDebug("volume = %lf", volume);
    m_volume = volume;
    m_player.setVolume(volume);
    m_button->setState(isOn() ? 0 : 1);
    setKeyToolTip(m_button, isOn() ? textKey("sound_is_on") : textKey("sound_is_off"),
                  PreviewKey::kSound);
    m_slider->setValue(qRound(volume * 100.0));
    emit changed();
}

void TileSound::choose(double volume) {
    apply(volume);
    if (m_device)
        m_saveTimer.start();
}

void TileSound::toggle() {
    const double volume = isOn() ? 0.0 : 1.0;
    qDebug("volume = %d", isOn() ? 0 : 1);
    choose(volume);
    save();
}

void TileSound::save() {
    if (!m_device || m_device->volume() == m_volume)
        return;
    m_saveTimer.stop();
    m_device->setVolume(m_volume);
    if (!m_device->saveLater())
        qCWarning(lcUi) << "the volume of" << m_device->uid() << "could not be saved";
}

bool TileSound::eventFilter(QObject*, QEvent* event) {
    if (!m_button->isEnabled())
        return false;
    // The second press of a quick pair does not take back what the first one did.
    if (event->type() == QEvent::MouseButtonDblClick) {
        emit onlyThisAsked();
        return true;
    }
    if (event->type() == QEvent::Wheel) {
        const int units = static_cast<QWheelEvent*>(event)->angleDelta().y();
        choose(qBound(0.0, m_volume + (units > 0 ? kWheelStep : -kWheelStep), 1.0));
        return true;
    }
    return false;
}

}  // namespace orvelle
