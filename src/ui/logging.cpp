#include "ui/logging.h"

Q_LOGGING_CATEGORY(lcUi, "orvelle.ui")
