#include "link/link_log.h"

Q_LOGGING_CATEGORY(lcLink, "orvelle.link")
