#pragma once

namespace orvelle::bench {

class Workbench;

// Each adds its figures to the workbench's report and is false when it could not measure one.

/// From the start of the client's process until its window can be seen.
bool measureStartUp(Workbench& bench);
/// From the client's start, and from a camera's, until that camera is connected, while 31 others
/// that the client knows are off.
bool measureConnecting(Workbench& bench);
/// The camera list with 2,000 entries: the slowest key in its filter and the slowest scrolled
/// frame.
bool measureList(Workbench& bench);
/// Sixteen connected cameras at rest, and their streams without drawing, next to what decoding
/// alone costs; then drawn by bare views.
bool measureEngine(Workbench& bench);
/// One camera of 1080p: in a bare view, in the client's window, and a snapshot of it.
bool measureFullHd(Workbench& bench);
/// From the moment that a demo camera puts into its picture until that is on the screen.
bool measureLatency(Workbench& bench);
/// The client's window with sixteen cameras: CPU by the kind of work, pictures shown, memory.
bool measureGrid(Workbench& bench);
/// How long the interface thread stands still while cameras come, go and are away, and how long
/// sixteen take to close.
bool measureDelay(Workbench& bench);
/// Sixteen recordings against the same streams just played.
bool measureRecording(Workbench& bench);
/// From choosing a moment on the timeline until the recording's first picture is on the screen.
bool measurePlayback(Workbench& bench);
/// A download from a card over a path of 4 Mbit/s, against that rate.
bool measureDownload(Workbench& bench);
/// The client against sixteen of the field's cheapest player, mpv, on the same clips. Only when
/// asked for by its name.
bool measurePeers(Workbench& bench);
/// What a camera's viewer, memory and logins suffer while strangers flood its port; four minutes.
bool measureStorm(Workbench& bench);

}  // namespace orvelle::bench
