#pragma once

#include <QLoggingCategory>

/// The room's own log lines.
Q_DECLARE_LOGGING_CATEGORY(lcMedia)
