#include "ui/list/list_view.h"

#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QScrollBar>

#include <algorithm>

#include "ui/list/base_adapter.h"
#include "ui/list/lv_item_view.h"
#include "ui/widgets/focus_ring.h"
#include "ui/widgets/scroll_bar_style.h"
#include "ui/widgets/widget.h"

namespace {

constexpr int kMargin = 10;
constexpr int kSpacing = 10;
constexpr int kScrollStep = 30;

}  // namespace

KvListView::KvListView(QWidget* parent) : QScrollArea(parent), m_container(new KvWidget(this)) {
    static_cast<KvWidget*>(m_container)->setBackgroundColor(0xffffff, 255);
    setWidget(m_container);
    setFrameShape(QFrame::NoFrame);
    setAlignment(Qt::AlignTop | Qt::AlignHCenter);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    setFocusPolicy(Qt::StrongFocus);
    setStyleSheet(QStringLiteral("QScrollArea{background:#ffffff};"));
    verticalScrollBar()->setSingleStep(kScrollStep);
    verticalScrollBar()->setStyleSheet(QLatin1String(orvelle::kScrollBarStyle));
}

void KvListView::setAdapter(KvBaseAdapter* adapter) {
    if (m_adapter)
        disconnect(m_adapter, nullptr, this, nullptr);
    m_adapter = adapter;
    if (m_adapter)
        connect(m_adapter, &KvBaseAdapter::refresh, this, &KvListView::onAdapterRefresh);
    onAdapterRefresh();
}

void KvListView::onAdapterRefresh() {
    const QList<KvLVItemView*> former = m_views.values();
    m_views.clear();
    m_selected.clear();
    for (KvLVItemView* view : former)
        dropItem(view);
    measure();
    setCurrent(m_current);
    makeItemsNearTheScreen();
}

// The container's height leaves no room below the last item.
void KvListView::measure() {
    const int count = m_adapter ? m_adapter->getCount() : 0;
    int widest = 0;
    m_tops.assign(1, kMargin);
    for (int i = 0; i < count; ++i) {
        const QSize size = m_adapter->getItemSize(i);
        widest = std::max(widest, size.width());
        m_tops.push_back(m_tops.back() + size.height() + kSpacing);
    }
    m_container->setFixedSize(widest + 2 * kMargin, m_tops.back() - kMargin);
}

int KvListView::indexAt(int y) const {
    const auto after = std::upper_bound(m_tops.begin(), m_tops.end() - 1, y);
    return std::max(0, int(after - m_tops.begin()) - 1);
}

void KvListView::makeItemsNearTheScreen() {
    const int page = viewport()->height();
    const int top = verticalScrollBar()->value();
    const int first = indexAt(top - page);
    const int last = std::min(indexAt(top + 2 * page), count() - 1);
    for (const int index : m_views.keys()) {
        if (index < first || index > last)
            dropItem(m_views.take(index));
    }
    for (int i = first; i <= last; ++i) {
        if (!m_views.contains(i))
            addItem(i);
    }
}

void KvListView::addItem(int index) {
    KvLVItemView* view = m_adapter->createItemView(index, m_container);
    view->setFixedSize(m_adapter->getItemSize(index));
    view->move((m_container->width() - view->width()) / 2, m_tops[size_t(index)]);
    m_adapter->bindItemView(index, view);
    m_views.insert(index, view);
    view->setSelected(isSelected(index));
    view->setHasRing(m_isRingShown && index == m_current);
    connect(view, &KvLVItemView::clickItemView, this, &KvListView::_onClickItemView);
    connect(view, &KvLVItemView::rightClickItemView, this, &KvListView::_onRightClickItemView);
    connect(view, &KvLVItemView::doubleClickItemView, this, &KvListView::_onDoubleClickItemView);
    view->show();
}

// The signal that led here may come from the item, so it is not deleted at once.
void KvListView::dropItem(KvLVItemView* view) {
    disconnect(view, nullptr, this, nullptr);
    view->hide();
    view->deleteLater();
}

void KvListView::resizeEvent(QResizeEvent* event) {
    QScrollArea::resizeEvent(event);
    makeItemsNearTheScreen();
}

void KvListView::scrollContentsBy(int dx, int dy) {
    QScrollArea::scrollContentsBy(dx, dy);
    makeItemsNearTheScreen();
}

int KvListView::indexOf(const KvLVItemView* view) const {
    for (auto item = m_views.begin(); view && item != m_views.end(); ++item) {
        if (item.value()->isSameView(view))
            return item.key();
    }
    return -1;
}

void KvListView::updateItem(int index) {
    if (KvLVItemView* view = itemView(index))
        m_adapter->bindItemView(index, view);
}

void KvListView::setMultiSelect(bool multiSelect) {
    m_isMultiSelect = multiSelect;
    if (!multiSelect)
        clearSelection();
}

void KvListView::clearSelection() {
    selectOnly(-1);
}

void KvListView::selectItem(int index) {
    if (index < 0 || index >= count())
        return;
    if (!m_isMultiSelect)
        return selectOnly(index);
    m_selected.insert(index);
    showSelection(index);
}

void KvListView::deselectItem(int index) {
    m_selected.remove(index);
    showSelection(index);
}

void KvListView::toggle(int index) {
    if (m_isMultiSelect && isSelected(index))
        deselectItem(index);
    else
        selectItem(index);
}

void KvListView::selectOnly(int index) {
    m_selected.clear();
    if (index >= 0)
        m_selected.insert(index);
    for (const int item : m_views.keys())
        showSelection(item);
}

void KvListView::showSelection(int index) {
    if (KvLVItemView* view = itemView(index))
        view->setSelected(isSelected(index));
}

void KvListView::_onClickItemView(KvLVItemView* view) {
    showRing(false);
    setCurrent(indexOf(view));
    toggle(m_current);
    emit clickItemView(view);
}

void KvListView::_onDoubleClickItemView(KvLVItemView* view) {
    showRing(false);
    setCurrent(indexOf(view));
    toggle(m_current);
    emit doubleClickItemView(view);
}

void KvListView::_onRightClickItemView(KvLVItemView* view, int x, int y) {
    showRing(false);
    setCurrent(indexOf(view));
    if (!m_isMultiSelect)
        selectOnly(m_current);
    emit rightClickItemView(view, x, y);
}

void KvListView::keyPressEvent(QKeyEvent* event) {
    if (count() > 0 && event->key() == Qt::Key_F10 && event->modifiers() == Qt::ShiftModifier) {
        openMenu();
        return;
    }
    if (count() == 0 || (event->modifiers() & ~Qt::KeypadModifier)) {
        QScrollArea::keyPressEvent(event);
        return;
    }
    switch (event->key()) {
        case Qt::Key_Return:
        case Qt::Key_Enter:
        case Qt::Key_Space:
            toggle(m_current);
            emit clickItemView(scrollToCurrent());
            break;
        default:
            if (!moveByKey(event->key()) && !scrollToCurrent()->handleKey(event->key()))
                event->ignore();
    }
}

bool KvListView::moveByKey(int key) {
    const int last = count() - 1;
    int target = m_current;
    switch (key) {
        case Qt::Key_Up:
            --target;
            break;
        case Qt::Key_Down:
            ++target;
            break;
        case Qt::Key_PageUp:
            target -= itemsAPage();
            break;
        case Qt::Key_PageDown:
            target += itemsAPage();
            break;
        case Qt::Key_Home:
            target = 0;
            break;
        case Qt::Key_End:
            target = last;
            break;
        default:
            return false;
    }
    showRing(true);
    setCurrent(std::clamp(target, 0, last));
    scrollToCurrent();
    return true;
}

int KvListView::itemsAPage() const {
    const int height = m_tops[size_t(m_current) + 1] - m_tops[size_t(m_current)];
    return std::max(1, viewport()->height() / height);
}

// A list that was never shown has no range to scroll in; its item is made nevertheless.
KvLVItemView* KvListView::scrollToCurrent() {
    const int top = m_tops[size_t(m_current)];
    const int height = m_tops[size_t(m_current) + 1] - top - kSpacing;
    ensureVisible(m_container->width() / 2, top + height / 2, 0, height / 2 + kMargin);
    if (!itemView(m_current))
        addItem(m_current);
    return itemView(m_current);
}

void KvListView::contextMenuEvent(QContextMenuEvent* event) {
    if (event->reason() == QContextMenuEvent::Keyboard && count() > 0)
        openMenu();
}

void KvListView::openMenu() {
    KvLVItemView* view = scrollToCurrent();
    const QPoint centre = view->rect().center();
    if (!m_isMultiSelect)
        selectOnly(m_current);
    emit rightClickItemView(view, centre.x(), centre.y());
}

void KvListView::focusInEvent(QFocusEvent* event) {
    QScrollArea::focusInEvent(event);
    const bool byKeyboard =
        event->reason() != Qt::MouseFocusReason && orvelle::FocusRing::isKeyboardInUse();
    showRing(byKeyboard);
    if (byKeyboard && count() > 0)
        scrollToCurrent();
}

void KvListView::focusOutEvent(QFocusEvent* event) {
    QScrollArea::focusOutEvent(event);
    showRing(false);
}

void KvListView::setCurrent(int index) {
    if (KvLVItemView* view = itemView(m_current))
        view->setHasRing(false);
    m_current = std::clamp(index, 0, std::max(0, count() - 1));
    showRing(m_isRingShown);
}

void KvListView::showRing(bool visible) {
    m_isRingShown = visible;
    if (KvLVItemView* view = itemView(m_current))
        view->setHasRing(visible);
}
