#pragma once

#include <QString>

#include <functional>

namespace orvelle {

/// Gives out the next number of a counter in the settings, which goes up only and starts over at 1
/// where it holds nonsense or has come to its end. Numbers that `isTaken` are passed over. Any
/// thread.
int takeId(const QString& counter, const std::function<bool(int)>& isTaken = {});

}  // namespace orvelle
