#pragma once

namespace orvelle {

/// Whether this machine may have a graphics card that draws for this session; false is certain:
/// there is none, it was switched off, or the screen is somewhere else. Asks no driver, so it is
/// quick. Any thread.
bool mayHaveGraphicsCard();

}  // namespace orvelle
