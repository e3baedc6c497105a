#include "ui/list/tutk_group_remove_view.h"

#include <QPushButton>

#include "ui/widgets/widget_utils.h"

namespace {

constexpr QRect kThumbnail(5, 5, KvTUTKGroupRemoveView::kThumbnailWidth, 72);
constexpr QRect kName(8, 77, 174, 20);
constexpr QRect kButton(150, 29, 24, 24);

}  // namespace

KvTUTKGroupRemoveView::KvTUTKGroupRemoveView(orvelle::ThumbnailLoader& loader, QWidget* parent)
    : GroupItemView({kThumbnail, kName}, loader, parent) {
    auto* button = new QPushButton(this);
    button->setFocusPolicy(Qt::NoFocus);
    button->setGeometry(kButton);
    KvWidgetUtils::setUpImageButton(button, QStringLiteral("remove"), "remove");
    connect(button, &QPushButton::clicked, this, &KvTUTKGroupRemoveView::_onClickRemoveButton);
}

bool KvTUTKGroupRemoveView::handleKey(int key) {
    if (key != Qt::Key_Delete)
        return false;
    emit clickRemoveButton(this);
    return true;
}

void KvTUTKGroupRemoveView::_onClickRemoveButton(bool /*checked*/) {
    emit clickRemoveButton(this);
}
