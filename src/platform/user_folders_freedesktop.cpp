#include "platform/user_folders.h"

#include <QDir>

namespace orvelle {

QString stateRoot() {
    const QString root = qEnvironmentVariable("XDG_STATE_HOME");
    return QDir::isAbsolutePath(root) ? root : QDir::homePath() + QStringLiteral("/.local/state");
}

}  // namespace orvelle
