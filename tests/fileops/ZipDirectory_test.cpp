#include "fileops/ZipDirectory.h"

#include "CopyTestSupport.h"
#include "support/TestArchives.h"

using namespace kestrin;

namespace {

struct Seen
{
    std::string path;
    mode_t mode;
    off_t size;
    time_t modified;
    bool encrypted;
    bool operator==(const Seen &) const = default;
};

std::ostream &operator<<(std::ostream &out, const Seen &seen)
{
    return out << seen.path << " " << std::oct << seen.mode << std::dec << " " << seen.size << " "
               << seen.modified << (seen.encrypted ? " encrypted" : "");
}

Seen SeenOf(const ArchiveMember &member)
{
    return {member.path,
            member.info.st_mode,
            member.info.st_size,
            member.info.st_mtime,
            member.encrypted};
}

std::vector<Seen> Quickly(const std::string &archive, status_t *status)
{
    std::vector<Seen> seen;
    *status = ZipDirectory::Read(archive,
                                 [&](const ArchiveMember &m) { seen.push_back(SeenOf(m)); });
    return seen;
}

std::vector<Seen> Generally(const std::string &archive)
{
    std::vector<Seen> seen;
    ArchiveReader reader(archive);
    ArchiveMember member;
    while (reader.Next(&member) == B_OK)
        seen.push_back(SeenOf(member));
    return seen;
}

using ZipDirectoryTest = CopyTest;

TEST_F(ZipDirectoryTest, DescribesMembersAsTheGeneralReaderDoes)
{
    const std::string small = src + "/small.zip";
    WriteTestArchive(small,
                     "zip",
                     {{"./readme.txt", "hello", TestMember::File, 0640, 1200000000},
                      FolderMember("docs/", 0750),
                      {"docs//guide/intro.txt", std::string(70000, 'i'), TestMember::File, 0600},
                      {"empty", ""},
                      LinkMember("latest", "docs/guide/intro.txt")});
    const std::string locked = src + "/locked.zip";
    WriteTestArchive(locked, "zip", {{"secret.txt", "words"}}, "password");
    // The same archive as other zip writers make it: without the Unix
    // timestamp field (times from the DOS fields), with Unix modes that
    // lack their type, written on DOS.
    const std::string bytes = *ReadFileBytes(small);
    const auto variant = [&](const std::string &name,
                             const std::function<void(std::string &)> &change) {
        std::string changed = bytes;
        change(changed);
        WriteFileBytes(src + "/" + name, changed);
        return src + "/" + name;
    };
    const auto eachEntry = [](std::string &zip, const std::function<void(size_t)> &change) {
        for (size_t at = zip.find("PK\1\2"); at != std::string::npos;
             at = zip.find("PK\1\2", at + 4))
            change(at);
    };
    const std::string dosTimes = variant("dos-times.zip", [](std::string &zip) {
        for (size_t at = zip.find("UT"); at != std::string::npos; at = zip.find("UT", at))
            zip.replace(at, 2, "XX");
    });
    const std::string untyped = variant("untyped.zip", [&](std::string &zip) {
        eachEntry(zip, [&](size_t at) { zip[at + 41] = char(zip[at + 41] & 0x0f); });
    });
    const std::string dos = variant("dos.zip", [&](std::string &zip) {
        eachEntry(zip, [&](size_t at) {
            zip[at + 5] = 0;
            zip[at + 38] = char(S_ISDIR(uint8_t(zip[at + 41]) << 8) ? 0x11 : 0x00);
        });
    });
    // More members than the classic end record can count: the zip64 records.
    std::vector<TestMember> many;
    for (int i = 0; i < 70000; i++)
        many.push_back({"d" + std::to_string(i % 7) + "/m" + std::to_string(i), "x"});
    const std::string big = src + "/many.zip";
    WriteTestArchive(big, "zip", many);

    for (const std::string &archive : {small, dosTimes, untyped, dos, locked, big}) {
        status_t status = B_ERROR;
        const std::vector<Seen> quick = Quickly(archive, &status);
        ASSERT_EQ(status, B_OK) << archive;
        EXPECT_EQ(quick, Generally(archive)) << archive;
    }
}

TEST_F(ZipDirectoryTest, LeavesWhatItCannotDescribeForSureToTheGeneralReader)
{
    const std::string whole = src + "/whole.zip";
    WriteTestArchive(whole, "zip", {{"a.txt", "aaaa"}, {"b.txt", "bbbb"}});
    const std::string bytes = *ReadFileBytes(whole);
    const std::string cut = src + "/cut.zip";
    WriteFileBytes(cut, bytes.substr(0, bytes.size() - 30));
    const std::string prefixed = src + "/prefixed.zip";
    WriteFileBytes(prefixed, "#!/bin/sh\nexit 0\n" + bytes);
    const std::string accented = src + "/accented.zip";
    WriteTestArchive(accented, "zip", {{"caf\xc3\xa9.txt", "coffee"}});
    const std::string tar = src + "/plain.tar";
    WriteTestArchive(tar, "tar", {{"a.txt", "aaaa"}});
    for (const std::string &archive : {cut, prefixed, accented, tar, src + "/missing.zip"}) {
        status_t status = B_OK;
        EXPECT_TRUE(Quickly(archive, &status).empty()) << archive;
        EXPECT_EQ(status, B_UNSUPPORTED) << archive;
    }

    const std::atomic<bool> cancel = true;
    EXPECT_EQ(ZipDirectory::Read(
                  whole, [](const ArchiveMember &) {}, &cancel),
              B_CANCELED);
}

} // namespace
