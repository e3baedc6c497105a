#include "render/picture_zoom.h"

#include "support/suites.h"

using orvelle::PictureScale;
using orvelle::PictureZoom;

namespace {

class PictureZoomTest : public QObject {
    Q_OBJECT

private slots:
    void pointUnderTheMouse_stays_untilAnEdgeHolds() {
        const PictureScale fit{1.0, 0.5};
        const auto pointAt = [](const QRectF& place, const QPointF& at) {
            return QPointF((at.x() - place.left()) / place.width(),
                           (at.y() - place.top()) / place.height());
        };
        for (const QPointF& at : {QPointF(0.5, 0.5), QPointF(0.2, 0.45), QPointF(0.9, 0.6)}) {
            PictureZoom zoom;
            // From here on the picture is as high as the view.
            zoom.zoomAt(2.0, at, fit);
            QCOMPARE(zoom.place(fit).height(), 1.0);
            const QPointF before = pointAt(zoom.place(fit), at);
            zoom.zoomAt(1.5, at, fit);
            const QPointF after = pointAt(zoom.place(fit), at);
            QVERIFY((after - before).manhattanLength() < 1e-9);
            zoom.zoomAt(1.0 / 3.0, at, fit);
            QVERIFY(!zoom.isActive());
            QCOMPARE(zoom.place(fit), QRectF(0.0, 0.25, 1.0, 0.5));
        }
    }

    void picture_leavesNoGap() {
        const PictureScale fit{0.4, 1.0};
        PictureZoom zoom;
        zoom.zoomAt(100.0, {0.5, 0.5}, fit);
        QCOMPARE(zoom.factor(), PictureZoom::kMaxFactor);
        for (const QPointF& delta : {QPointF(50, 50), QPointF(-50, -50), QPointF(50, -50)}) {
            zoom.moveBy(delta, fit);
            QVERIFY(zoom.place(fit).contains(QRectF(0.0, 0.0, 1.0, 1.0)));
            // No movement is kept beyond the edge: the way back begins at once.
            const double left = zoom.place(fit).left();
            zoom.moveBy({delta.x() > 0 ? -0.1 : 0.1, 0.0}, fit);
            QVERIFY(qAbs(qAbs(zoom.place(fit).left() - left) - 0.1) < 1e-9);
        }
        // In a wider view there is nothing to move to.
        QCOMPARE(PictureZoom(zoom).place({0.1, 1.0}).center().x(), 0.5);
        zoom.reset();
        QCOMPARE(zoom.place(fit), QRectF(0.3, 0.0, 0.4, 1.0));
    }
};

const orvelle::test::RegisterSuite<PictureZoomTest> registered;

}  // namespace

#include "picture_zoom_test.moc"
