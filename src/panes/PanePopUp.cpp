#include "panes/PanePopUp.h"

#include "panes/DirListItem.h"
#include "panes/PaneModel.h"

#include <QMenu>

namespace kestrin {

void PanePopUp::Exec(
    QWidget &list, PaneModel &model, const QPoint &globalPosition, bool overRow, bool treeShown)
{
    QMenu menu(&list);
    menu.setObjectName("DirViewPopUp");
    const auto add = [&menu, &model](const QString &label, uint32_t code) {
        QObject::connect(menu.addAction(label), &QAction::triggered, &model, [&model, code] {
            platform::Message command(code);
            model.SendToWindow(command);
        });
    };
    const DirListItem *row = model.SelectedRow();
    if (overRow)
        add("Open", 100);
    add("Up One Level", 100);
    if (overRow) {
        add("Edit Name", 107);
        add("Get Info", 142);
        add("Permissions", 128);
        add("Identify", 141);
        add("Delete File(s)", 144);
    }
    add("New Folder", 106);
    add("Open Tracker", 130);
    const QString name = row != nullptr ? QString::fromUtf8(row->Name().c_str()) : QString();
    add(QString("%1 To [%2]").arg("Open Terminal", name), kOpenTerminalHere);
    add("Add Pane", 120);
    add("Remove Pane", 121);
    if (treeShown)
        add("Remove Tree", 143);
    else
        add("View Tree", 129);
    menu.exec(globalPosition);
}

} // namespace kestrin
