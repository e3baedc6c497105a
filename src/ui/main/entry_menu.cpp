#include "ui/main/entry_menu.h"

#include "ui/palette.h"
#include "ui/widgets/menu_style.h"
#include "ui/widgets/text.h"
#include "ui/widgets/widget_utils.h"

namespace orvelle {

EntryMenu::EntryMenu(QWidget* parent) : QMenu(parent) {
    setStyleSheet(menuStyle());
    m_code = addAction(text("enter_new_code"));
    m_codeSeparator = addSeparator();
    m_top = addAction(text("top"));
    addSeparator();
    m_edit = addAction(QString());
    addSeparator();
    m_remove = addAction(QString());
    for (QAction* action : {m_code, m_top, m_edit, m_remove})
        action->setFont(KvWidgetUtils::font(palette::kSmallFontPixels));
}

void EntryMenu::setGroupType(int type) {
    const bool isGroup = type == KvDeviceGroup::kGroup;
    m_edit->setText(isGroup ? text("edit_group") : text("edit_device"));
    m_remove->setText(isGroup ? text("remove_group") : text("remove_device"));
}

void EntryMenu::setCodeOffered(bool offered) {
    m_code->setVisible(offered);
    m_codeSeparator->setVisible(offered);
}

}  // namespace orvelle
