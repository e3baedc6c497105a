#include "media/media_log.h"

extern "C" {
#include <libavutil/log.h>
}

Q_LOGGING_CATEGORY(lcMedia, "orvelle.media")

namespace orvelle {

void silenceFfmpeg() {
    av_log_set_level(AV_LOG_FATAL);
}

}  // namespace orvelle
