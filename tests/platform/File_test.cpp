#include "platform/File.h"

#include "support/TempHome.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

using namespace platform;

TEST(FileTest, OpenModesCreateEraseAppendAndRefuseFolders)
{
    TempHome home;
    const std::string path = home.Root() + "/notes.txt";
    EXPECT_EQ(File(path, B_READ_ONLY).InitCheck(), B_ENTRY_NOT_FOUND);

    File created(path, B_WRITE_ONLY | B_CREATE_FILE | B_FAIL_IF_EXISTS, 0600);
    ASSERT_EQ(created.InitCheck(), B_OK);
    EXPECT_EQ(created.Write("hello", 5), 5);
    char byte;
    EXPECT_LT(created.Read(&byte, 1), 0) << "a write-only file must not read";
    struct stat info;
    ASSERT_EQ(stat(path.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0600u);

    EXPECT_EQ(File(path, B_WRITE_ONLY | B_CREATE_FILE | B_FAIL_IF_EXISTS).InitCheck(),
              B_FILE_EXISTS);
    EXPECT_EQ(ReadFileBytes(path), "hello");

    File appending(path, B_READ_WRITE | B_OPEN_AT_END);
    EXPECT_EQ(appending.Write(" world", 6), 6);
    EXPECT_EQ(ReadFileBytes(path), "hello world");

    File erased(path, B_WRITE_ONLY | B_CREATE_FILE | B_ERASE_FILE);
    ASSERT_EQ(erased.InitCheck(), B_OK);
    EXPECT_EQ(ReadFileBytes(path), "");

    EXPECT_EQ(File(home.Root(), B_READ_ONLY).InitCheck(), B_IS_A_DIRECTORY);
    EXPECT_EQ(File(home.Root(), B_READ_WRITE | B_CREATE_FILE).InitCheck(), B_IS_A_DIRECTORY);
}

TEST(FileTest, MovingHandsOverTheDescriptorAndClosingReleasesIt)
{
    TempHome home;
    WriteFileBytes(home.Root() + "/data", "abc");
    int fd;
    {
        File first(home.Root() + "/data", B_READ_ONLY);
        fd = first.FD();
        ASSERT_GE(fd, 0);
        EXPECT_TRUE(fcntl(fd, F_GETFD) & FD_CLOEXEC);
        File second(std::move(first));
        EXPECT_EQ(first.FD(), -1);
        EXPECT_EQ(first.InitCheck(), B_NO_INIT);
        File third;
        third = std::move(second);
        char buffer[4] = {};
        EXPECT_EQ(third.Read(buffer, sizeof buffer), 3);
    }
    EXPECT_EQ(fcntl(fd, F_GETFD), -1) << "the descriptor leaked";
}

TEST(FileTest, SizeSeekAndPositionedIo)
{
    TempHome home;
    File file(home.Root() + "/data", B_READ_WRITE | B_CREATE_FILE);
    ASSERT_EQ(file.InitCheck(), B_OK);
    ASSERT_EQ(file.Write("0123456789", 10), 10);
    EXPECT_EQ(file.Position(), 10);

    EXPECT_EQ(file.Seek(2, SEEK_SET), 2);
    char buffer[16] = {};
    EXPECT_EQ(file.Read(buffer, 3), 3);
    EXPECT_EQ(std::string(buffer, 3), "234");
    EXPECT_LT(file.Seek(-1, SEEK_SET), 0);

    ASSERT_EQ(file.SetSize(4), B_OK);
    off_t size = 0;
    ASSERT_EQ(file.GetSize(&size), B_OK);
    EXPECT_EQ(size, 4);
    ASSERT_EQ(file.SetSize(8), B_OK);
    EXPECT_EQ(file.WriteAt(6, "ab", 2), 2);
    EXPECT_EQ(file.Position(), 5) << "positioned writes must not move the file position";
    EXPECT_EQ(file.ReadAt(0, buffer, sizeof buffer), 8);
    EXPECT_EQ(std::string(buffer, 8), std::string("0123\0\0ab", 8));
    EXPECT_EQ(file.ReadAt(100, buffer, 4), 0);

    file.Unset();
    EXPECT_EQ(file.Read(buffer, 1), B_NO_INIT);
}
