#pragma once

#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include "report.h"

namespace orvelle::bench {

constexpr int kGridCameras = 16;
constexpr int kPlayTimeoutMs = 20000;
constexpr int kSettleMs = 2000;
constexpr int kClipSeconds = 20;

/// What the sections of one run share: clips, a directory and the figures. Interface thread.
class Workbench {
public:
    /// Options that make orvelle-camera send the demo scene as pictures that were encoded before,
    /// so that its own work stays small; `size` is one of its --size. The clip is made when first
    /// asked for, and repeated, with a gap of less than a picture each time.
    QStringList clipSource(const char* size, int seconds = kClipSeconds);
    /// The clip's file, made as above.
    QString clip(const char* size, int seconds = kClipSeconds);
    QString path(const char* name) const { return m_directory.filePath(QLatin1String(name)); }
    Report& report() { return m_report; }

    /// Of a program of this build.
    static QString program(const char* name);
    /// CPU of this process in percent of one core, measured for `ms` of running event loop.
    static double cpuPercentFor(int ms);

private:
    QTemporaryDir m_directory;
    Report m_report;
};

}  // namespace orvelle::bench
