// Kestrin as a desktop installs it: `cmake --install` into a temporary
// prefix, the installed program started there, and the desktop's own
// validators on the files that make it a desktop application.

#include "ProgramRun.h"
#include "TempHome.h"

#include <QFile>
#include <QStandardPaths>
#include <QStringList>
#include <QTemporaryDir>
#include <QTest>
#include <gtest/gtest.h>

namespace {

// The values of the marker lines "kestrin-startup KEY VALUE".
QStringList Marked(const QString &output, const QString &key)
{
    QStringList values;
    const QString prefix = "kestrin-startup " + key + " ";
    for (const QString &line : output.split('\n')) {
        if (line.startsWith(prefix))
            values << line.mid(prefix.size());
    }
    return values;
}

TEST(Installed, TheInstalledTreeRunsOnItsOwnFiles)
{
    TempHome home;
    QTemporaryDir prefix;
    ASSERT_TRUE(prefix.isValid());
    const QString root = prefix.path();
    const ProgramRun install = ProgramRun::Of(KESTRIN_CMAKE,
                                       {"--install", KESTRIN_BUILD_DIR, "--prefix", root});
    ASSERT_EQ(install.exitCode, 0) << install.err.toStdString();
    for (const char *file : {"/bin/kestrin",
                             "/share/applications/kestrin.desktop",
                             "/share/metainfo/org.kestrin.Kestrin.metainfo.xml",
                             "/share/icons/hicolor/scalable/apps/kestrin.svg",
                             "/share/man/man1/kestrin.1.gz",
                             "/share/kestrin/help/Index.html"})
        EXPECT_TRUE(QFile::exists(root + file)) << file;

    // No session bus: Kestrin runs alone, and says nothing about it.
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("QT_QPA_PLATFORM", "offscreen");
    environment.insert("KESTRIN_STARTUP_MARKER", "1");
    environment.remove("DBUS_SESSION_BUS_ADDRESS");
    environment.insert("XDG_RUNTIME_DIR", QString::fromStdString(home.Root()));
    const ProgramRun kestrin = ProgramRun::Of(root + "/bin/kestrin", {}, environment);
    ASSERT_TRUE(kestrin.ended) << "no marker, no end";
    EXPECT_EQ(kestrin.exitCode, 0);
    EXPECT_FALSE(kestrin.err.contains("bus", Qt::CaseInsensitive)) << kestrin.err.toStdString();
    EXPECT_EQ(Marked(kestrin.out, "first-paint").size(), 1);
    const auto one = [&](const QString &key) {
        return Marked(kestrin.out, key).join('|').toStdString();
    };
    EXPECT_EQ(one("help"), (root + "/share/kestrin/help").toStdString());
    EXPECT_EQ(one("add-on-host"), (root + "/lib/kestrin/kestrin-addon-host").toStdString());
    EXPECT_EQ(one("add-on"), (root + "/lib/kestrin/add-ons/Tracker/MakeArchive").toStdString());
    const QStringList icons = Marked(kestrin.out, "icon");
    EXPECT_EQ(icons.size(), 8) << kestrin.out.toStdString();
    for (const QString &icon : icons)
        EXPECT_TRUE(icon.startsWith(root + "/share/icons/hicolor/")) << icon.toStdString();
}

TEST(Installed, TheDesktopsValidatorsAcceptTheEntryAndTheMetainfo)
{
    const QString validate = QStandardPaths::findExecutable("desktop-file-validate");
    const QString appstream = QStandardPaths::findExecutable("appstreamcli");
    if (validate.isEmpty() || appstream.isEmpty())
        GTEST_SKIP()
            << "desktop-file-utils or appstream is not installed (scripts/setup installs them)";
    const QString data = KESTRIN_SOURCE_DIR "/data";
    const ProgramRun entry = ProgramRun::Of(validate, {data + "/kestrin.desktop"});
    EXPECT_EQ(entry.exitCode, 0) << entry.out.toStdString() << entry.err.toStdString();
    // Warnings fail too; --no-net keeps the check on this machine.
    const ProgramRun metainfo = ProgramRun::Of(appstream,
                                        {"validate",
                                         "--no-net",
                                         "--explain",
                                         data + "/org.kestrin.Kestrin.metainfo.xml"});
    EXPECT_EQ(metainfo.exitCode, 0) << metainfo.out.toStdString() << metainfo.err.toStdString();
}

} // namespace
