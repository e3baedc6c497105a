#include "device/logging.h"

Q_LOGGING_CATEGORY(lcDevice, "orvelle.device")
