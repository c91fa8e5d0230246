#include "TempHome.h"

#include <QProcess>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

struct Output
{
    std::string out, err;
};

Output RunFsize(const std::string &path)
{
    QProcess process;
    process.start(KESTRIN_FSIZE, {QString::fromStdString(path)});
    process.waitForFinished(30000);
    return {process.readAllStandardOutput().toStdString(),
            process.readAllStandardError().toStdString()};
}

std::string Line(long size, const std::string &path)
{
    char line[4200];
    snprintf(line, sizeof(line), "% 8ld %s\n", size, path.c_str());
    return line;
}

long OwnSize(const std::string &path)
{
    struct stat info;
    stat(path.c_str(), &info);
    return long(info.st_size);
}

} // namespace

TEST(OccupiedSpace, AFolderIsListedAfterItsContents)
{
    TempHome home;
    const std::string dir = home.Root() + "/tree";
    mkdir(dir.c_str(), 0755);
    WriteFileBytes(dir + "/a", std::string(5, 'a'));
    mkdir((dir + "/sub").c_str(), 0755);
    WriteFileBytes(dir + "/sub/b", std::string(1234567, 'b'));
    // A link back up must not make the walk go round for ever.
    symlink("..", (dir + "/sub/up").c_str());

    const Output result = RunFsize(dir);
    EXPECT_EQ(result.err, "");
    // Folder order is the file system's, so compare the lines as a set, and
    // check that each folder comes after what it holds.
    const std::string out = result.out;
    for (const std::string &line : {Line(5, dir + "/a"),
                                    Line(1234567, dir + "/sub/b"),
                                    Line(OwnSize(dir + "/sub/up"), dir + "/sub/up"),
                                    Line(OwnSize(dir + "/sub"), dir + "/sub"),
                                    Line(OwnSize(dir), dir)})
        EXPECT_NE(out.find(line), std::string::npos) << line << " in\n" << out;
    EXPECT_EQ(std::count(out.begin(), out.end(), '\n'), 5);
    EXPECT_LT(out.find(Line(1234567, dir + "/sub/b")),
              out.find(Line(OwnSize(dir + "/sub"), dir + "/sub")));
    EXPECT_EQ(out.rfind(Line(OwnSize(dir), dir)), out.size() - Line(OwnSize(dir), dir).size());
}

TEST(OccupiedSpace, AMissingPathIsReportedOnStandardErrorOnly)
{
    TempHome home;
    const std::string missing = home.Root() + "/not here";
    const Output result = RunFsize(missing);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "fsize: can't access " + missing + "\n");
}
