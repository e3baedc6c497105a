#include "ui/list/list_view.h"

#include <QMouseEvent>
#include <QScrollBar>

#include "support/suites.h"
#include "ui/list/base_adapter.h"
#include "ui/list/lv_item_view.h"

namespace {

constexpr QSize kItemSize(60, 40);
constexpr QColor kSelected(255, 204, 89);

/// An item that notes the keys that the list leaves to it.
class KeyItem : public KvLVItemView {
public:
    KeyItem(QStringList& log, QWidget* parent) : KvLVItemView(parent), m_log(log) {}
    bool handleKey(int key) override {
        m_log.append(QStringLiteral("key %1").arg(key, 0, 16));
        return true;
    }

private:
    QStringList& m_log;
};

class PlainAdapter : public KvBaseAdapter {
public:
    PlainAdapter(int count, QStringList& log) : m_count(count), m_log(log) {}
    int getCount() override { return m_count; }
    KvLVItemView* createItemView(int, QWidget* parent) override {
        return new KeyItem(m_log, parent);
    }
    void bindItemView(int index, KvLVItemView* view) override {
        view->setObjectName(QString::number(index));
    }
    QSize getItemSize(int index) override { return kItemSize + QSize(index, 0); }
    void setCount(int count) {
        m_count = count;
        emit refresh();
    }

private:
    int m_count;
    QStringList& m_log;
};

void send(QWidget* view, QEvent::Type type, Qt::MouseButton button, const QPointF& position) {
    QMouseEvent event(type, position, view->mapToGlobal(position.toPoint()), button,
                      type == QEvent::MouseButtonPress ? button : Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(view, &event);
}

void clickAt(QWidget* view, Qt::MouseButton button, const QPointF& release = {5.4, 6.6}) {
    send(view, QEvent::MouseButtonPress, button, {5, 5});
    send(view, QEvent::MouseButtonRelease, button, release);
}

// A late signal of the item's own, shorter timer has come by the time this one fires.
void letClicksSettle() {
    bool isOver = false;
    QTimer::singleShot(250, [&isOver] { isOver = true; });
    QTRY_VERIFY(isOver);
}

QColor outlineOf(KvLVItemView* view) {
    return view->grab().toImage().pixelColor(1, view->height() / 2);
}

}  // namespace

class ListViewTest : public QObject {
    Q_OBJECT

private slots:
    void init() {
        m_log.clear();
        m_adapter = std::make_unique<PlainAdapter>(5, m_log);
        m_list = std::make_unique<KvListView>();
        m_list->resize(90, 120);
        m_list->setAdapter(m_adapter.get());
        connect(m_list.get(), &KvListView::clickItemView, this, [this](KvLVItemView* view) {
            m_log += QStringLiteral("click ") + view->objectName();
        });
        connect(m_list.get(), &KvListView::doubleClickItemView, this, [this](KvLVItemView* view) {
            m_log += QStringLiteral("double ") + view->objectName();
        });
        connect(m_list.get(), &KvListView::rightClickItemView, this,
                [this](KvLVItemView* view, int x, int y) {
                    m_log += QStringLiteral("right %1 %2,%3").arg(view->objectName()).arg(x).arg(y);
                });
    }

    // L, R, M: a click; o: released outside; e: released on the edge; -: wait for the signal.
    void clicks_areToldApart_data() {
        addRows({{"L", "click 0"},
                 {"LL", "double 0"},
                 {"LLL", "double 0;click 0"},
                 {"L-L", "click 0;click 0"},
                 {"R", "right 0 5,7"},
                 {"LR", "click 0;right 0 5,7"},
                 {"o", ""},
                 {"oL", "click 0"},
                 {"Lo", "click 0"},
                 {"e", "click 0"},
                 {"ML", "click 0"}});
    }
    void clicks_areToldApart() {
        QFETCH(QString, script);
        QFETCH(QString, expected);
        QWidget* item = m_list->itemViews().first();
        for (const QChar step : script) {
            if (step == QLatin1Char('-'))
                QTRY_VERIFY(!m_log.isEmpty());
            else if (step == QLatin1Char('o'))
                clickAt(item, Qt::LeftButton, {kItemSize.width() + 0.5, 5});
            else if (step == QLatin1Char('e'))
                clickAt(item, Qt::LeftButton,
                        {double(kItemSize.width()), double(kItemSize.height())});
            else
                clickAt(item, step == QLatin1Char('R')   ? Qt::RightButton
                              : step == QLatin1Char('M') ? Qt::MiddleButton
                                                         : Qt::LeftButton);
        }
        if (!script.endsWith(QLatin1Char('R')))
            letClicksSettle();
        QCOMPARE(m_log.join(QLatin1Char(';')), expected);
    }

    void selection_followsClicks_inBothKinds() {
        const QList<KvLVItemView*> items = m_list->itemViews();
        emit items[1]->clickItemView(items[1]);
        emit items[3]->clickItemView(items[3]);
        QCOMPARE(selected(), QStringLiteral("3"));
        QCOMPARE(outlineOf(items[3]), kSelected);
        m_list->setMultiSelect(true);
        emit items[1]->clickItemView(items[1]);
        emit items[4]->doubleClickItemView(items[4]);
        emit items[0]->rightClickItemView(items[0], 0, 0);
        QCOMPARE(selected(), QStringLiteral("134"));
        emit items[3]->clickItemView(items[3]);
        QCOMPARE(selected(), QStringLiteral("14"));
        QVERIFY(outlineOf(items[3]) != kSelected);
        m_list->selectItem(9);
        m_list->selectItem(-1);
        m_list->selectItem(4);
        QCOMPARE(selected(), QStringLiteral("14"));
        m_list->setMultiSelect(false);
        QCOMPARE(selected(), QString());
    }

    void container_fitsItsItems_andScrollsToTheCurrent() {
        QCOMPARE(m_list->widget()->size(), QSize(64 + 2 * 10, 5 * (40 + 10)));
        QCOMPARE(m_list->widget()->minimumSize(), m_list->widget()->size());
        show();
        for (int i = 0; i < 5; ++i)
            QCOMPARE(m_list->itemViews()[i]->geometry().top(), 10 + i * 50);
        QTest::keyClick(m_list.get(), Qt::Key_End);
        QVERIFY(!m_list->itemViews()[4]->visibleRegion().isEmpty());
        QVERIFY(m_list->itemViews()[0]->visibleRegion().isEmpty());
    }

    void thousands_costNoMoreThanAFewPages_andKeepTheirSelection() {
        m_adapter->setCount(5000);
        m_list->setMultiSelect(true);
        m_list->selectItem(2);
        m_list->selectItem(4000);
        show();
        QVERIFY(m_list->itemView(2)->isSelected() && !m_list->itemView(4000));
        for (const Qt::Key key : {Qt::Key_End, Qt::Key_PageUp, Qt::Key_Home, Qt::Key_End}) {
            QTest::keyClick(m_list.get(), key);
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
            QVERIFY(m_list->findChildren<KvLVItemView*>().size() < 12);
        }
        QCOMPARE(m_list->itemViews().last()->objectName(), QStringLiteral("4999"));
        QVERIFY(!m_list->itemViews().last()->visibleRegion().isEmpty());
        m_list->verticalScrollBar()->setValue(4000 * 50);
        QCOMPARE(selected(), QStringLiteral("4000"));
        m_list->deselectItem(2);
        QTest::keyClick(m_list.get(), Qt::Key_Home);
        QCOMPARE(selected(), QString());
        m_list->verticalScrollBar()->setValue(1000 * 50);
        QTest::keyClick(m_list.get(), Qt::Key_Return);
        QCOMPARE(m_log, QStringList(QStringLiteral("click 0")));
    }

    void rebuild_isHarmless_fromWithinAnItemsSignal() {
        connect(m_list.get(), &KvListView::doubleClickItemView, this,
                [this] { m_adapter->setCount(2); });
        QWidget* item = m_list->itemViews().last();
        clickAt(item, Qt::LeftButton);
        clickAt(item, Qt::LeftButton);
        QCOMPARE(m_list->itemViews().size(), 2);
        m_list->updateItem(2);
        m_list->updateItem(-1);
        m_list->setAdapter(nullptr);
        QVERIFY(m_list->itemViews().isEmpty());
        QTest::keyClick(m_list.get(), Qt::Key_Return);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCOMPARE(m_log, QStringList(QStringLiteral("double 4")));
    }

    void keys_moveAndClick_data() {
        addRows({{"Return", "click 0"},
                 {"Down Down Enter", "click 2"},
                 {"Up Space", "click 0"},
                 {"End Down Return", "click 4"},
                 {"End Home Return", "click 0"},
                 {"PgDown Return", "click 2"},
                 {"End PgUp Return", "click 2"},
                 {"F2", "key 1000031"}});
    }
    void keys_moveAndClick() {
        QFETCH(QString, script);
        QFETCH(QString, expected);
        show();
        for (const QString& key : script.split(QLatin1Char(' ')))
            QTest::keyClick(m_list.get(), static_cast<Qt::Key>(QKeySequence(key)[0]));
        QCOMPARE(m_log.join(QLatin1Char(';')), expected);
    }

    void menuKey_rightClicksTheCurrentItem() {
        QTest::keyClick(m_list.get(), Qt::Key_Down);
        QContextMenuEvent event(QContextMenuEvent::Keyboard, {});
        QApplication::sendEvent(m_list.get(), &event);
        QTest::keyClick(m_list.get(), Qt::Key_F10, Qt::ShiftModifier);
        const QString menu = QStringLiteral("right 1 30,19");
        QCOMPARE(m_log, (QStringList{menu, menu}));
        m_adapter->setCount(0);
        QApplication::sendEvent(m_list.get(), &event);
        QCOMPARE(m_log.size(), 2);
    }

private:
    struct Row {
        const char* script;
        const char* expected;
    };
    static void addRows(std::initializer_list<Row> rows) {
        QTest::addColumn<QString>("script");
        QTest::addColumn<QString>("expected");
        for (const auto& [script, expected] : rows)
            QTest::newRow(script) << script << expected;
    }
    void show() {
        m_list->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_list.get()));
    }
    QString selected() const {
        QString names;
        for (const KvLVItemView* view : m_list->itemViews())
            names += view->isSelected() ? view->objectName() : QString();
        return names;
    }

    QStringList m_log;
    std::unique_ptr<PlainAdapter> m_adapter;
    std::unique_ptr<KvListView> m_list;
};

static const orvelle::test::RegisterSuite<ListViewTest> kListViewTest;
#include "list_view_test.moc"
