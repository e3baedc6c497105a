#include "ui/list/device_group_pop_menu.h"

#include <QMenu>

#include "ui/palette.h"
#include "ui/widgets/widget_utils.h"

namespace {

// An ampersand would mark a shortcut.
QString menuText(QString name) {
    return name.replace(QLatin1Char('&'), QLatin1String("&&"));
}

}  // namespace

KvDeviceGroupAction::KvDeviceGroupAction(KvDeviceGroup* group, QObject* parent)
    : QAction(menuText(group->name()), parent), m_group(group) {
    setFont(KvWidgetUtils::font(orvelle::palette::kSmallFontPixels));
    connect(this, &QAction::triggered, this, &KvDeviceGroupAction::_onClickAction);
}

void KvDeviceGroupAction::_onClickAction(bool /*checked*/) {
    if (m_group)
        emit clickDeviceGroup(m_group);
}

KvDeviceGroupPopMenu::KvDeviceGroupPopMenu(QObject* parent) : QObject(parent) {}

KvDeviceGroupPopMenu::~KvDeviceGroupPopMenu() = default;

void KvDeviceGroupPopMenu::setGroups(const QList<KvDeviceGroup*>& groups) {
    m_menu = std::make_unique<QMenu>();
    for (KvDeviceGroup* group : groups) {
        auto* action = new KvDeviceGroupAction(group, m_menu.get());
        connect(action, &KvDeviceGroupAction::clickDeviceGroup, this,
                &KvDeviceGroupPopMenu::clickDeviceGroup);
        m_menu->addAction(action);
    }
}

void KvDeviceGroupPopMenu::open(const QPoint& globalPosition) {
    if (m_menu && !m_menu->isEmpty())
        m_menu->exec(globalPosition);
}
