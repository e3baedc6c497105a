#pragma once

#include <QLabel>

/// A label that is clicked like a button: with the mouse, or with Enter and the space bar once
/// setFocusPolicy() lets it take the focus. Interface thread.
class KvClickLabel : public QLabel {
    Q_OBJECT

public:
    explicit KvClickLabel(QWidget* parent = nullptr);
    explicit KvClickLabel(const QString& text, QWidget* parent = nullptr);

signals:
    void click(bool checked);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
};

/// The same with a number that tells its owner which label was clicked. Interface thread.
class ClickLabel : public QLabel {
    Q_OBJECT

public:
    explicit ClickLabel(QWidget* parent = nullptr);

    void setTag(int tag) { m_tag = tag; }
    int tag() const { return m_tag; }

signals:
    void click();

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    int m_tag = 0;
};
