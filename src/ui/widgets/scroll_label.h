#pragma once

#include <QScrollArea>

class QLabel;

/// White text of any length that scrolls. Interface thread.
class KvScrollLabel : public QScrollArea {
    Q_OBJECT

public:
    explicit KvScrollLabel(QWidget* parent = nullptr);

    void setText(const QString& text);

private:
    QLabel* m_label;  ///< child
};
