#include "ui/list/device_group_pop_menu.h"

#include <QFontMetrics>
#include <QMenu>

#include "ui/palette.h"
#include "ui/widgets/menu_style.h"
#include "ui/widgets/widget_utils.h"

namespace {

constexpr int kMaxNameWidth = 240;

// An ampersand would mark a shortcut, and a name from a file may have any length.
QString menuText(const QString& name) {
    const QFontMetrics metrics(KvWidgetUtils::font(orvelle::palette::kSmallFontPixels));
    return metrics.elidedText(name, Qt::ElideRight, kMaxNameWidth)
        .replace(QLatin1Char('&'), QLatin1String("&&"));
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
    m_menu->setStyleSheet(orvelle::menuStyle());
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
