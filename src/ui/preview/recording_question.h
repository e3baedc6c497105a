#pragma once

#include <QString>

class QWidget;

namespace orvelle {

/// Says how many recordings run and end with what the user is about to do; empty for none.
QString runningRecordingsText(int count);

/// The same, with the download from a card that ends, too.
QString endingText(int recordings, bool isDownloading);

/// Whether that may be done: true at once when nothing runs, else what the user answers, over
/// `over`. Cameras may come and go while the question stands. Interface thread.
bool mayEndRecordings(int count, QWidget* over, bool isDownloading = false);

}  // namespace orvelle
