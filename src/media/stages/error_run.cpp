#include "media/stages/error_run.h"

#include <QtDebug>

extern "C" {
#include <libavutil/error.h>
}

namespace orvelle {

void ErrorRun::note(int result) {
    if (result < 0 && result != m_last) {
        char text[1024] = "";
        av_strerror(result, text, sizeof text);
        qDebug("%s error = %d\n%s", m_what, result, text);
    }
    m_last = result;
}

}  // namespace orvelle
