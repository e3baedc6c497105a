#pragma once

#include <QColor>
#include <QWidget>

/// A widget that paints itself as a filled, optionally outlined rounded rectangle. It starts
/// without fill, outline and rounding; every setter repaints. Interface thread.
class KvWidget : public QWidget {
    Q_OBJECT

public:
    explicit KvWidget(QWidget* parent = nullptr);

    void setBackgroundColor(const QColor& color);
    /// `rgb` is 0xRRGGBB, `alpha` 0 to 255.
    void setBackgroundColor(unsigned rgb, int alpha);
    /// Pixels; a width of 0 draws no outline.
    void setBorder(int width, int radius);
    void setBorder(int width, int radius, const QColor& color);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QColor m_backgroundColor{255, 255, 255, 0};
    int m_borderWidth = 0;
    int m_borderRadius = 0;
    QColor m_borderColor{255, 255, 255, 0};
};
