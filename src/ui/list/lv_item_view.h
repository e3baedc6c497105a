#pragma once

#include <QColor>
#include <QPointF>
#include <QTimer>
#include <QWidget>

/// One item of a KvListView: background, selection outline, and telling clicks apart.
///
/// A left click is reported once no second one came within 100 ms, a right click at once.
class KvLVItemView : public QWidget {
    Q_OBJECT
public:
    explicit KvLVItemView(QWidget* parent = nullptr);

    /// Gives the item the look of its selected flag.
    virtual void applySelection();
    /// Shows the data that the adapter bound.
    virtual void showData() {}
    virtual bool isSameView(const KvLVItemView* view) const { return view == this; }
    /// Handles a key that the list does not know; false when it is of no use here either.
    virtual bool handleKey(int key);

    bool isSelected() const { return m_isSelected; }
    void setSelected(bool selected);
    /// Whether the list's keyboard position is shown on this item.
    void setHasRing(bool hasRing);
    void setBackgroundColor(const QColor& colour);
    void setBorder(int width, const QColor& colour);

signals:
    void clickItemView(KvLVItemView* view);
    void doubleClickItemView(KvLVItemView* view);
    void rightClickItemView(KvLVItemView* view, int x, int y);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private slots:
    void _invokeClickTimer();

private:
    bool holds(const QPointF& position) const;
    void countRelease(int button);
    void clearClicks();
    void drawOutline(QPainter& painter, int width, const QColor& colour, qreal inset) const;

    QColor m_background = QColor(255, 255, 255, 0);
    int m_borderWidth = 0;
    QColor m_borderColour = QColor(0, 0, 0, 0);
    bool m_isSelected = false;
    bool m_hasRing = false;

    QTimer m_clickTimer;
    int m_pendingButton = Qt::NoButton;  ///< of the click that the timer will report
    int m_pressCount = 0;
    QPointF m_releasePosition;
};
