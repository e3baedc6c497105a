#pragma once

#include <QMap>
#include <QScrollArea>
#include <QSet>

#include <vector>

class KvBaseAdapter;
class KvLVItemView;

/// A scrolling column of item views that an adapter makes.
///
/// Items exist as views only while they are on the screen or within a page of it, so that thousands
/// cost no more than twenty; which of them are selected is kept by index.
///
/// One Tab stop: arrows, Page, Home and End move a ring over the items, Enter and Space click the
/// item with the ring, the menu key right-clicks it, other keys go to it.
class KvListView : public QScrollArea {
    Q_OBJECT
public:
    explicit KvListView(QWidget* parent = nullptr);

    /// Borrowed; null empties the list.
    void setAdapter(KvBaseAdapter* adapter);
    /// Binds the item again; nothing outside the list.
    void updateItem(int index);
    /// Leaving multi-selection clears every selection.
    void setMultiSelect(bool multiSelect);
    /// Adds to the selection in multi-selection, else replaces it. Nothing outside the list.
    void selectItem(int index);
    void deselectItem(int index);
    void clearSelection();
    bool isSelected(int index) const { return m_selected.contains(index); }

    /// Null for an item that is far from the screen, or none.
    KvLVItemView* itemView(int index) const { return m_views.value(index, nullptr); }
    /// -1 for other views.
    int indexOf(const KvLVItemView* view) const;
    /// Those that exist now, from top to bottom.
    QList<KvLVItemView*> itemViews() const { return m_views.values(); }

public slots:
    /// Rebuilds all items.
    void onAdapterRefresh();

signals:
    /// Each after the selection was applied.
    void clickItemView(KvLVItemView* view);
    void rightClickItemView(KvLVItemView* view, int x, int y);
    void doubleClickItemView(KvLVItemView* view);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;

private slots:
    void _onClickItemView(KvLVItemView* view);
    void _onRightClickItemView(KvLVItemView* view, int x, int y);
    void _onDoubleClickItemView(KvLVItemView* view);

private:
    void measure();
    void makeItemsNearTheScreen();
    void addItem(int index);
    void dropItem(KvLVItemView* view);
    int count() const { return int(m_tops.size()) - 1; }
    int indexAt(int y) const;
    void toggle(int index);
    void selectOnly(int index);
    void showSelection(int index);
    KvLVItemView* scrollToCurrent();
    bool moveByKey(int key);
    void openMenu();
    int itemsAPage() const;
    void setCurrent(int index);
    void showRing(bool visible);

    KvBaseAdapter* m_adapter = nullptr;
    QWidget* const m_container;
    std::vector<int> m_tops = {0};  ///< of each item, and of the one after the last
    QMap<int, KvLVItemView*> m_views;
    QSet<int> m_selected;
    bool m_isMultiSelect = false;
    int m_current = 0;  ///< where the keyboard is; may lie outside the list
    bool m_isRingShown = false;
};
