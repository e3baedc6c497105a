#pragma once

#include <QString>

#include <vector>

namespace orvelle::bench {

/// The figures of one run, printed as a table and written as one flat JSON object.
class Report {
public:
    /// `aim` says what would be good; empty when there is no aim.
    void add(const QString& key, double value, const QString& aim = {});
    void print() const;
    /// False when the file cannot be written.
    bool writeJson(const QString& path) const;

private:
    struct Row {
        QString key;
        double value;
        QString aim;
    };
    std::vector<Row> m_rows;
};

}  // namespace orvelle::bench
