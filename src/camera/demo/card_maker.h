#pragma once

#include <QString>

#include "camera/demo/demo_feed.h"

namespace orvelle {

/// Fills a card's directory with what the demo camera would have recorded had it run: some runs of
/// a few minutes on each of the last `days` days, and the last minutes of the former hour. Each
/// picture shows the moment that it stands for. What is there already stays; so calling it again
/// adds what came due since. As fast as the machine can. Empty on success, else the reason.
QString makeCard(const QString& directory, int days, const DemoFeedConfig& config);

}  // namespace orvelle
