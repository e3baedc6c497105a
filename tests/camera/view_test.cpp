#include <cstring>

#include "camera/demo/demo_scene.h"
#include "camera/demo/pan_tilt.h"
#include "camera/encoding/painter.h"
#include "camera/feed/gop_cache.h"
#include "camera/media_kit.h"
#include "support/suites.h"

using namespace orvelle;

namespace {

constexpr int64_t kSecond = 1'000'000;

EncodedFrame frameOf(size_t bytes, bool isKey) {
    EncodedFrame frame;
    frame.isKey = isKey;
    frame.bytes = std::make_shared<std::vector<uint8_t>>(bytes);
    return frame;
}

}  // namespace

class ViewTest : public QObject {
    Q_OBJECT

private slots:
    void panTilt_movesAsToldUpToItsLimits() {
        const int directions[][2] = {{0, 0},  {0, -1}, {0, 1},  {-1, 0}, {-1, -1},
                                     {-1, 1}, {1, 0},  {1, -1}, {1, 1},  {0, 0}};
        for (uint8_t code = 0; code < 10; ++code) {
            PanTilt motor;
            motor.command({this, 1}, code, 1, 0);
            QCOMPARE(motor.position(kSecond).pan, 0.5 + directions[code][0] * 0.125);
            QCOMPARE(motor.position(kSecond).tilt, 0.5 + directions[code][1] * 0.125);
            QCOMPARE(motor.position(60 * kSecond).pan, 0.5 + directions[code][0] * 0.5);
            QCOMPARE(motor.position(60 * kSecond).tilt, 0.5 + directions[code][1] * 0.5);
        }
    }

    void panTilt_stops_onlyWhenItsOwnClientGoes() {
        PanTilt motor;
        motor.command({this, 1}, 6, 1, 0);
        motor.release({this, 2}, kSecond);
        motor.release({nullptr, 1}, kSecond);
        QCOMPARE(motor.position(2 * kSecond).pan, 0.75);
        motor.release({this, 1}, 2 * kSecond);
        QCOMPARE(motor.position(9 * kSecond).pan, 0.75);
    }

    void scene_showsClockAndView() {
        const int width = 321, height = 181;  // odd sizes have no even chroma
        const DemoScene scene(width, height, 1, "UID 1");
        const FramePtr first = makePicture(width, height);
        const FramePtr second = makePicture(width, height);
        const auto differs = [&](int fromRow, int toRow) {
            bool isDifferent = false;
            for (int row = fromRow; row < toRow; ++row)
                isDifferent |=
                    std::memcmp(first->data[0] + row * first->linesize[0],
                                second->data[0] + row * second->linesize[0], size_t(width)) != 0;
            return isDifferent;
        };
        SceneTime time;
        time.stamp = 0x123456789ABC;
        scene.draw(first.get(), time, {0.0, 0.0});
        QCOMPARE(test::clockOf(*first), std::optional<uint64_t>(time.stamp));
        scene.draw(second.get(), time, {1.0, 0.0});
        QVERIFY2(differs(height / 2, height), "pan does not show");
        scene.draw(second.get(), time, {0.0, 1.0});
        QVERIFY2(differs(height / 2, height), "tilt does not show");
        time.localDayUs = 1000;
        scene.draw(second.get(), time, {0.0, 0.0});
        QVERIFY2(differs(height / 10 + 4, height / 3), "the readable clock stands still");
        QVERIFY2(!differs(height / 2, height), "the clock moves the street");
    }

    void gopCache_givesTheGroupUp_whenItOutgrowsABurst() {
        GopCache cache;
        cache.add(frameOf(1, false));  // nothing to join before a key frame
        QVERIFY(cache.squeezed().empty());
        cache.add(frameOf(GopCache::kMaxBytes, true));
        QCOMPARE(cache.squeezed().size(), size_t{1});
        cache.add(frameOf(1, false));
        QVERIFY(cache.squeezed().empty());
        for (size_t i = 0; i <= GopCache::kMaxFrames; ++i)
            cache.add(frameOf(1, i == 0));
        QVERIFY(cache.squeezed().empty());
    }
};

static const test::RegisterSuite<ViewTest> s_viewTest;

#include "view_test.moc"
