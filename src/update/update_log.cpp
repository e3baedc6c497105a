#include "update/update_log.h"

Q_LOGGING_CATEGORY(lcUpdate, "orvelle.update")
