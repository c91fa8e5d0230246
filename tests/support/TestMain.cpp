#include <QApplication>
#include <gtest/gtest.h>

// Every test executable runs inside a QApplication, so code that posts to the
// GUI thread or builds a widget behaves as it does in Kestrin.
int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
