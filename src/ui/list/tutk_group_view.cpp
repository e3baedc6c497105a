#include "ui/list/tutk_group_view.h"

#include <QPushButton>

#include "device/device_group.h"
#include "ui/widgets/text.h"
#include "ui/widgets/widget_utils.h"

namespace {

constexpr QRect kThumbnail(5, 5, KvTUTKGroupView::kThumbnailWidth, 90);
constexpr QRect kName(8, 97, 154, 24);
constexpr QRect kNameBesideButton(8, 97, 124, 24);
constexpr QRect kButton(140, 97, 24, 24);

}  // namespace

KvTUTKGroupView::KvTUTKGroupView(orvelle::ThumbnailLoader& loader, QWidget* parent)
    : GroupItemView({kThumbnail, kName}, loader, parent) {}

void KvTUTKGroupView::showData() {
    GroupItemView::showData();
    const KvDeviceGroup* entry = group();
    if (entry && entry->type() == KvDeviceGroup::kGroup)
        showButton(QStringLiteral("group_edit"), orvelle::textKey("edit_group"));
    else if (entry && m_isInGroup)
        showButton(QStringLiteral("group_camera"), orvelle::textKey("groups_with_this_camera"));
    else
        hideButton();
}

bool KvTUTKGroupView::handleKey(int key) {
    if (key != Qt::Key_F2 || !m_editButton || m_editButton->isHidden())
        return false;
    emit clickEditButton(this);
    return true;
}

void KvTUTKGroupView::showButton(const QString& image, const char* key) {
    if (!m_editButton) {
        m_editButton = new QPushButton(this);
        m_editButton->setFocusPolicy(Qt::NoFocus);
        m_editButton->setGeometry(kButton);
        connect(m_editButton, &QPushButton::clicked, this, &KvTUTKGroupView::_onClickEditButton);
    }
    KvWidgetUtils::setUpImageButton(m_editButton, image, key);
    m_editButton->show();
    setNameArea(kNameBesideButton);
}

void KvTUTKGroupView::hideButton() {
    if (m_editButton)
        m_editButton->hide();
    setNameArea(kName);
}

void KvTUTKGroupView::_onClickEditButton(bool /*checked*/) {
    emit clickEditButton(this);
}
