#include "widgets/TabbedPanel.h"

#include "widgets/RgbColor.h"

#include <QTabWidget>

namespace kestrin {

QTabWidget *MakeTabbedPanel(QWidget *window, int width, int height, int margin, int buttonHeight)
{
    auto *container = new QWidget(window);
    container->setObjectName("QueryContainer");
    container->setGeometry(0, 0, width, height);
    QPalette grey = container->palette();
    grey.setColor(QPalette::Window, kPanelGrey);
    container->setPalette(grey);
    container->setAutoFillBackground(true);

    auto *tabs = new QTabWidget(container);
    tabs->setObjectName("tab_view");
    tabs->setGeometry(margin, margin, width - 2 * margin, height - 3 * margin - buttonHeight);
    return tabs;
}

} // namespace kestrin
