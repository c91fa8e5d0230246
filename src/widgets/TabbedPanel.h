#pragma once

class QTabWidget;
class QWidget;

namespace kestrin {

// The body of a window with tabs above a row of buttons, as the query and
// preferences windows have it: a panel-grey view "QueryContainer" filling
// `window`, holding the tab view "tab_view" with `margin` around it and room
// for buttons of `buttonHeight` below. The container is the tab view's
// parent, where the buttons go.
QTabWidget *MakeTabbedPanel(QWidget *window, int width, int height, int margin, int buttonHeight);

} // namespace kestrin
