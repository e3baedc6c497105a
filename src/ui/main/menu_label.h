#pragma once

#include <QMargins>
#include <QWidget>

class KvWidget;
class QLabel;

/// One entry of the help menu. Interface thread.
class KvMenuLabel : public QWidget {
    Q_OBJECT

public:
    KvMenuLabel(const QString& text, QWidget* parent);

    void setArrowVisible(bool visible);
    void setCentred(bool centred);
    /// Widths of the lines along the edges: each 0 or 2.
    void setEdges(const QMargins& edges);
    /// Of the language entry: the sub-menu is open; of a language: it is the current one.
    void setFlag(int flag);
    int flag() const { return m_flag; }

signals:
    void click();

protected:
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    void applyStyle();

    KvWidget* m_lines;  ///< children; this one looks out behind the text at the edges
    QLabel* m_text;
    QLabel* m_arrow;
    int m_flag = 0;
    QMargins m_edges;
};
