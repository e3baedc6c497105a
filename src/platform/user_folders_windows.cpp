#include "platform/user_folders.h"

#include <QStandardPaths>

namespace orvelle {

QString stateRoot() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
}

}  // namespace orvelle
