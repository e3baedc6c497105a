#include "camera/camera_log.h"

Q_LOGGING_CATEGORY(lcCamera, "orvelle.camera", QtInfoMsg)
