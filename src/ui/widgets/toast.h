#pragma once

#include <QColor>
#include <QObject>
#include <QPointer>
#include <QTimer>

#include "ui/widgets/toast_view.h"

/// Shows a short message on top of a widget for a while; one at a time, a new one replaces the
/// one shown. The view belongs to the widget that it lies on, which may die first. Interface
/// thread.
class KvToast : public QObject {
    Q_OBJECT

public:
    enum Placement {
        kBottomCentre = 0,
        kTop = 1,
        kMiddle = 4,
        kLeft = 8,
        kRight = 16,
    };

    explicit KvToast(QObject* parent = nullptr);
    ~KvToast() override;

    /// `placement` is made of Placement flags.
    void show(QWidget* parent, const QString& text, int placement = kBottomCentre, int ms = 2000);
    void remove();
    /// Null when none is shown.
    KvToastView* view() const { return m_view; }

    void setMargins(int horizontal, int vertical);
    void setPaddings(int horizontal, int vertical);
    void setColors(const QColor& background, unsigned textRgb);

private:
    QPoint positionOf(const QSize& size, const QSize& parent, int placement) const;

    QPointer<KvToastView> m_view;
    QTimer m_timer;
    int m_horizontalMargin = 10;
    int m_verticalMargin = 10;
    int m_horizontalPadding = 10;
    int m_verticalPadding = 5;
    QColor m_backgroundColor{0, 0, 0, 128};
    unsigned m_textRgb = 0xffffff;
};
