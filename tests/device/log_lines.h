#pragma once

#include <QStringList>

#include <mutex>

namespace orvelle::test {

/// Collects Qt's log while it lives, instead of printing it.
class LogLines {
public:
    ~LogLines() { qInstallMessageHandler(m_previous); }

    /// What came since the last call.
    QStringList take() {
        const std::lock_guard<std::mutex> lock(s_mutex);
        return std::exchange(s_lines, {});
    }

private:
    static void handle(QtMsgType, const QMessageLogContext&, const QString& line) {
        const std::lock_guard<std::mutex> lock(s_mutex);
        s_lines.append(line);
    }

    inline static std::mutex s_mutex;  ///< guards s_lines
    inline static QStringList s_lines;
    const QtMessageHandler m_previous = qInstallMessageHandler(&LogLines::handle);
};

}  // namespace orvelle::test
