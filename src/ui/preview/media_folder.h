#pragma once

#include <QDateTime>
#include <QString>

class KvToast;
class QWidget;

namespace orvelle {

class VideoSurface;

/// The folder of a camera's snapshots or recordings. When it is gone the user is asked, over
/// `over`, whether to take the default one: empty when he would not. Cameras may come and go
/// while the question stands. Interface thread, as all here.
QString usableMediaFolder(QString (*folderOf)(const QString& uid), const QString& uid,
                          QWidget* over);

/// Asks, over `over`, whether to take the default media folder, as the chosen one is gone; takes
/// it.
bool agreesToDefaultFolder(QWidget* over);

/// Puts the camera's name into its media folder, which has been made, for whoever looks for it
/// there. Returns at once.
void nameMediaFolder(const QString& uid);

/// Writes the view's picture, taken at that moment, as NAME.jpg to the camera's snapshot folder:
/// its path, or empty after the user was told by `toast` or did not want it.
QString saveSnapshot(VideoSurface& view, const QString& uid, const QString& name,
                     const QDateTime& takenAt, QWidget* over, KvToast& toast);

}  // namespace orvelle
