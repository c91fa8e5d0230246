#include "PrivateMounts.h"

#include <gtest/gtest.h>

#ifdef KESTRIN_TESTS_WITH_WINDOWS
#include "widgets/MessageBoxSink.h"

#include <QApplication>
using TestApplication = QApplication;
#else
#include <QCoreApplication>
using TestApplication = QCoreApplication;
#endif

// Every test executable runs inside an application object, so code that
// posts to the GUI thread behaves as it does in Kestrin; the tests of
// windows get a QApplication and the message boxes, those of the cores only
// what the cores themselves link. Each test process mounts in a namespace
// of its own, before any thread exists.
int main(int argc, char **argv)
{
    PrivateMounts::Enter();
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    TestApplication app(argc, argv);
#ifdef KESTRIN_TESTS_WITH_WINDOWS
    kestrin::MessageBoxSink::Install();
#endif
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
