#pragma once

#include <QColor>
#include <QString>

class KvDevice;
class KvDeviceGroup;

namespace orvelle {

/// What the user reads about a camera's connection: online, or why it is not.
QString deviceStateText(const KvDevice& device);

/// The colour of its dot, on a dark ground.
QColor deviceStateColour(const KvDevice& device);

/// Whether the camera's password was changed, so that only a new device code helps; of an entry,
/// of the one camera that it stands for.
bool needsNewCode(const KvDevice& device);
bool needsNewCode(const KvDeviceGroup& entry);

/// How a list entry's cameras are doing.
struct EntryState {
    QString text;   ///< a camera's state; of a group, how many are online
    QColor colour;  ///< of the dot before the text, on a dark ground

    bool operator==(const EntryState& other) const {
        return text == other.text && colour == other.colour;
    }
};

EntryState entryState(const KvDeviceGroup& entry);

}  // namespace orvelle
