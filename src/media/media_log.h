#pragma once

#include <QLoggingCategory>

/// The room's own log lines.
Q_DECLARE_LOGGING_CATEGORY(lcMedia)

namespace orvelle {

/// Keeps FFmpeg's own lines off standard error: a damaged stream would write several for every
/// picture, and what fails is logged by its caller. Once at start-up, for the whole process.
void silenceFfmpeg();

}  // namespace orvelle
