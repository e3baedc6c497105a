#include "camera/camera_profile.h"

#include <QDateTime>

namespace orvelle {

int minutesEastOfUtc(const std::optional<int>& fixed) {
    return fixed ? *fixed : QDateTime::currentDateTime().offsetFromUtc() / 60;
}

}  // namespace orvelle
