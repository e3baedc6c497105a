#pragma once

#include <QList>
#include <QScrollArea>

class KvBaseAdapter;
class KvLVItemView;
class QVBoxLayout;

/// A scrolling column of item views that an adapter makes.
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
    /// Adds to the selection in multi-selection, else replaces it.
    void selectItem(int index);
    void clearSelection();

    /// From top to bottom; valid until the next rebuild.
    const QList<KvLVItemView*>& itemViews() const { return m_itemViews; }

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

private slots:
    void _onClickItemView(KvLVItemView* view);
    void _onRightClickItemView(KvLVItemView* view, int x, int y);
    void _onDoubleClickItemView(KvLVItemView* view);

private:
    void dropItems();
    void addItem(int index);
    void resizeContainer();
    void toggle(KvLVItemView* view);
    void selectOnly(const KvLVItemView* view);
    KvLVItemView* currentView() const { return m_itemViews.value(m_current, nullptr); }
    bool moveByKey(int key);
    void openMenu();
    int itemsAPage() const;
    void setCurrent(int index);
    void showRing(bool visible);

    KvBaseAdapter* m_adapter = nullptr;
    QWidget* const m_container;
    QVBoxLayout* const m_layout;
    QList<KvLVItemView*> m_itemViews;
    bool m_isMultiSelect = false;
    int m_current = 0;  ///< where the keyboard is; may lie outside the list
    bool m_isRingShown = false;
};
