#pragma once

#include <QObject>
#include <QSize>

class KvLVItemView;
class QWidget;

/// What a KvListView shows: how many items, how each looks and which data it carries.
///
/// Interface thread. The list view borrows its adapter, asks for the views that are
/// near the screen and makes them anew at refresh().
class KvBaseAdapter : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;

    virtual int getCount() = 0;
    /// A new view without data; the list view owns it.
    virtual KvLVItemView* createItemView(int index, QWidget* parent) = 0;
    /// Gives the view, made by createItemView(), the data of `index`; also to show it anew.
    virtual void bindItemView(int index, KvLVItemView* view) = 0;
    virtual QSize getItemSize(int index) = 0;

signals:
    void refresh();
};
