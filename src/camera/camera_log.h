#pragma once

#include <QLoggingCategory>

/// The camera's own log lines; warnings are shown, debug lines need QT_LOGGING_RULES.
Q_DECLARE_LOGGING_CATEGORY(lcCamera)
