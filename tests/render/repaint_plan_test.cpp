#include "render/repaint_plan.h"

#include "support/suites.h"

using orvelle::RepaintPlan;

namespace {

/// Plays views of given periods for two seconds of a clock of its own.
class Playback {
public:
    struct Camera {
        int64_t firstMs;
        int64_t periodMs;  ///< 0: one picture only
    };

    explicit Playback(const std::vector<Camera>& cameras) : m_views(cameras.size()) {
        for (RepaintPlan::View& view : m_views)
            m_plan.add(&view);
        std::vector<int64_t> since(cameras.size(), -1);
        for (int64_t now = 0; now < 2000; ++now) {
            for (size_t i = 0; i < cameras.size(); ++i) {
                const auto [first, period] = cameras[i];
                if (now < first || (period ? (now - first) % period : now - first) != 0)
                    continue;
                m_lost += now >= 1000 && m_views[i].isDirty ? 1 : 0;
                m_plan.note(m_views[i], now);
                since[i] = now;
            }
            const auto due = m_plan.dueMs(now);
            if (!due || *due > now)
                continue;
            const auto painted = m_plan.take(now);
            // Once they have found their pace.
            if (now < 1000)
                continue;
            for (const RepaintPlan::View* view : painted)
                m_longestMs =
                    std::max(m_longestMs, now - since[static_cast<size_t>(view - m_views.data())]);
            ++m_repaints;
        }
    }

    int repaintsPerSecond() const { return m_repaints; }
    int64_t longestWaitMs() const { return m_longestMs; }
    int picturesLost() const { return m_lost; }

private:
    RepaintPlan m_plan;
    std::vector<RepaintPlan::View> m_views;
    int m_repaints = 0;
    int64_t m_longestMs = 0;
    int m_lost = 0;
};

class RepaintPlanTest : public QObject {
    Q_OBJECT

private slots:
    void repaints_areShared_andNoPictureIsLostOrLate() {
        struct Row {
            const char* what;
            std::vector<Playback::Camera> cameras;
            int mostRepaints;
            int64_t longestMs;
        };
        const Row rows[] = {
            {"one never waits", {{0, 66}}, 16, 0},
            {"in step", {{0, 66}, {0, 66}, {0, 66}}, 16, 0},
            {"close together", {{0, 66}, {10, 66}, {20, 66}}, 16, 20},
            {"spread", {{0, 66}, {11, 66}, {22, 66}, {33, 66}, {44, 66}, {55, 66}}, 20, 50},
            {"fast ones wait less", {{0, 40}, {13, 40}, {26, 40}}, 34, 30},
            {"one is faster than the other", {{0, 33}, {5, 66}}, 31, 30},
            {"one stands still", {{0, 66}, {3, 0}}, 16, 50},
            {"slow ones are not waited for", {{0, 66}, {7, 500}}, 18, 50},
        };
        for (const Row& row : rows) {
            const Playback played(row.cameras);
            QVERIFY2(played.repaintsPerSecond() <= row.mostRepaints && played.picturesLost() == 0 &&
                         played.longestWaitMs() <= row.longestMs,
                     qPrintable(QStringLiteral("%1: %2 repaints, %3 ms, %4 lost")
                                    .arg(QLatin1String(row.what))
                                    .arg(played.repaintsPerSecond())
                                    .arg(played.longestWaitMs())
                                    .arg(played.picturesLost())));
        }
    }

    void view_isNotRepainted_onceItIsForgottenOrRemoved() {
        RepaintPlan plan;
        RepaintPlan::View seen, hidden, gone;
        for (RepaintPlan::View* view : {&seen, &hidden, &gone}) {
            plan.add(view);
            plan.note(*view, 0);
        }
        plan.forget(hidden);
        plan.remove(&gone);
        QCOMPARE(plan.dueMs(0), std::make_optional<int64_t>(0));
        QCOMPARE(plan.take(0), std::vector<RepaintPlan::View*>{&seen});
        QVERIFY(!plan.dueMs(100));
        // A burst is bounded, though nothing is waited for.
        plan.note(seen, 1);
        QCOMPARE(plan.dueMs(1), std::make_optional<int64_t>(RepaintPlan::kMinIntervalMs));
    }
};

const orvelle::test::RegisterSuite<RepaintPlanTest> registered;

}  // namespace

#include "repaint_plan_test.moc"
