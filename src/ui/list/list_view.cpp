#include "ui/list/list_view.h"

#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QScrollBar>
#include <QVBoxLayout>

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

KvListView::KvListView(QWidget* parent)
    : QScrollArea(parent), m_container(new KvWidget(this)), m_layout(new QVBoxLayout(m_container)) {
    static_cast<KvWidget*>(m_container)->setBackgroundColor(0xffffff, 255);
    // The container's height leaves no room below the last item.
    m_layout->setContentsMargins(kMargin, kMargin, kMargin, 0);
    m_layout->setSpacing(kSpacing);
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
    dropItems();
    const int count = m_adapter ? m_adapter->getCount() : 0;
    for (int i = 0; i < count; ++i)
        addItem(i);
    resizeContainer();
    setCurrent(m_current);
}

// The signal that led here may come from an item, so none is deleted at once.
void KvListView::dropItems() {
    for (KvLVItemView* view : std::as_const(m_itemViews)) {
        disconnect(view, nullptr, this, nullptr);
        m_layout->removeWidget(view);
        view->hide();
        view->deleteLater();
    }
    m_itemViews.clear();
}

void KvListView::addItem(int index) {
    KvLVItemView* view = m_adapter->createItemView(index, m_container);
    view->setFixedSize(m_adapter->getItemSize(index));
    m_layout->addWidget(view);
    m_adapter->bindItemView(index, view);
    m_itemViews.append(view);
    connect(view, &KvLVItemView::clickItemView, this, &KvListView::_onClickItemView);
    connect(view, &KvLVItemView::rightClickItemView, this, &KvListView::_onRightClickItemView);
    connect(view, &KvLVItemView::doubleClickItemView, this, &KvListView::_onDoubleClickItemView);
    view->show();
}

void KvListView::resizeContainer() {
    int widest = 0;
    int height = 0;
    for (const KvLVItemView* view : std::as_const(m_itemViews)) {
        widest = std::max(widest, view->width());
        height += view->height() + kSpacing;
    }
    m_container->setFixedSize(widest + 2 * kMargin, height);
}

void KvListView::updateItem(int index) {
    if (index >= 0 && index < m_itemViews.size())
        m_adapter->bindItemView(index, m_itemViews[index]);
}

void KvListView::setMultiSelect(bool multiSelect) {
    m_isMultiSelect = multiSelect;
    if (!multiSelect)
        clearSelection();
}

void KvListView::clearSelection() {
    selectOnly(nullptr);
}

void KvListView::selectItem(int index) {
    KvLVItemView* view = m_itemViews.value(index, nullptr);
    if (!view)
        return;
    if (m_isMultiSelect)
        view->setSelected(true);
    else
        selectOnly(view);
}

void KvListView::toggle(KvLVItemView* view) {
    if (m_isMultiSelect)
        view->setSelected(!view->isSelected());
    else
        selectOnly(view);
}

void KvListView::selectOnly(const KvLVItemView* view) {
    for (KvLVItemView* item : std::as_const(m_itemViews))
        item->setSelected(view && item->isSameView(view));
}

void KvListView::_onClickItemView(KvLVItemView* view) {
    showRing(false);
    setCurrent(m_itemViews.indexOf(view));
    toggle(view);
    emit clickItemView(view);
}

void KvListView::_onDoubleClickItemView(KvLVItemView* view) {
    showRing(false);
    setCurrent(m_itemViews.indexOf(view));
    toggle(view);
    emit doubleClickItemView(view);
}

void KvListView::_onRightClickItemView(KvLVItemView* view, int x, int y) {
    showRing(false);
    setCurrent(m_itemViews.indexOf(view));
    if (!m_isMultiSelect)
        selectOnly(view);
    emit rightClickItemView(view, x, y);
}

void KvListView::keyPressEvent(QKeyEvent* event) {
    KvLVItemView* view = currentView();
    if (view && event->key() == Qt::Key_F10 && event->modifiers() == Qt::ShiftModifier) {
        openMenu();
        return;
    }
    if (!view || (event->modifiers() & ~Qt::KeypadModifier)) {
        QScrollArea::keyPressEvent(event);
        return;
    }
    switch (event->key()) {
        case Qt::Key_Return:
        case Qt::Key_Enter:
        case Qt::Key_Space:
            toggle(view);
            emit clickItemView(view);
            break;
        default:
            if (!moveByKey(event->key()) && !view->handleKey(event->key()))
                event->ignore();
    }
}

bool KvListView::moveByKey(int key) {
    const int last = m_itemViews.size() - 1;
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
    ensureWidgetVisible(currentView(), 0, kMargin);
    return true;
}

int KvListView::itemsAPage() const {
    return std::max(1, viewport()->height() / (currentView()->height() + kSpacing));
}

void KvListView::contextMenuEvent(QContextMenuEvent* event) {
    if (event->reason() == QContextMenuEvent::Keyboard && currentView())
        openMenu();
}

void KvListView::openMenu() {
    KvLVItemView* view = currentView();
    ensureWidgetVisible(view, 0, kMargin);
    const QPoint centre = view->rect().center();
    if (!m_isMultiSelect)
        selectOnly(view);
    emit rightClickItemView(view, centre.x(), centre.y());
}

void KvListView::focusInEvent(QFocusEvent* event) {
    QScrollArea::focusInEvent(event);
    const bool byKeyboard =
        event->reason() != Qt::MouseFocusReason && orvelle::FocusRing::isKeyboardInUse();
    showRing(byKeyboard);
    if (byKeyboard && currentView())
        ensureWidgetVisible(currentView(), 0, kMargin);
}

void KvListView::focusOutEvent(QFocusEvent* event) {
    QScrollArea::focusOutEvent(event);
    showRing(false);
}

void KvListView::setCurrent(int index) {
    if (KvLVItemView* view = currentView())
        view->setHasRing(false);
    m_current = std::clamp(index, 0, std::max(0, m_itemViews.size() - 1));
    showRing(m_isRingShown);
}

void KvListView::showRing(bool visible) {
    m_isRingShown = visible;
    if (KvLVItemView* view = currentView())
        view->setHasRing(visible);
}
