#include "widgets/PlaceOnScreen.h"

#include <QGuiApplication>
#include <QScreen>
#include <QTest>
#include <QWidget>
#include <gtest/gtest.h>

using kestrin::PlaceOnScreen;

namespace {

std::string Text(const QRect &rect)
{
    return std::to_string(rect.x()) + "," + std::to_string(rect.y()) + " "
           + std::to_string(rect.width()) + "x" + std::to_string(rect.height());
}

// Wherever a window is asked to open, all of it, frame and title bar
// included, is on the free area of its main window's screen: moved in as
// little as it takes, cut to the area when bigger. Before it is shown, it
// leaves room for its frame on either side of where it was put.
TEST(PlaceOnScreen, AWindowOpensWhollyInsideTheScreensFreeArea)
{
    const QRect room = QGuiApplication::primaryScreen()->availableGeometry();
    QWidget main;
    main.setGeometry(room.adjusted(40, 40, -40, -40));
    main.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&main));
    const QRect frame = main.frameGeometry();
    const QMargins margins(main.geometry().left() - frame.left(),
                           main.geometry().top() - frame.top(),
                           frame.right() - main.geometry().right(),
                           frame.bottom() - main.geometry().bottom());

    const QSize small(200, 100);
    const struct
    {
        const char *what;
        QRect wanted;
        QRect expected;
    } cases[] = {
        {"inside", QRect(QPoint(100, 100), small), QRect(QPoint(100, 100), small)},
        {"past the corner",
         QRect(room.bottomRight(), small),
         QRect(room.bottomRight()
                   - QPoint(small.width() + margins.right() - 1,
                            small.height() + margins.bottom() - 1),
               small)},
        {"before the corner",
         QRect(room.topLeft() - QPoint(500, 500), small),
         QRect(room.topLeft() + QPoint(margins.left(), margins.top()), small)},
        {"bigger than the screen", room.adjusted(-10, -10, 10, 10), room.marginsRemoved(margins)},
    };
    for (const auto &each : cases) {
        QWidget window(&main, Qt::Window);
        window.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
        PlaceOnScreen(&window, each.wanted);
        EXPECT_EQ(Text(window.geometry()), Text(each.expected)) << each.what;
        QTest::qWait(0);
        EXPECT_TRUE(room.contains(window.frameGeometry())) << each.what;
    }

    // Not shown yet: the frame may come where the window's corner was put.
    QWidget hidden(&main, Qt::Window);
    PlaceOnScreen(&hidden, room);
    const QRect asked = hidden.geometry();
    EXPECT_TRUE(room.contains(asked.marginsAdded(margins))) << Text(asked);
    EXPECT_TRUE(room.contains(asked.translated(margins.left(), margins.top()).marginsAdded(margins)))
        << Text(asked);
}

} // namespace
