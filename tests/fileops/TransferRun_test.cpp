// The pairings that go through a work folder, run by the engine against a
// real vsftpd on 127.0.0.1 with real archives: members of an archive onto the
// server, local files packed onto it, files on it packed into a local zip.
// Each is also stopped in the middle, which must leave nothing behind: no
// work folder, no partial file, no zip.

#include "CopyTestSupport.h"
#include "RealServers.h"

#include "fileops/TransferPlanner.h"
#include "fileops/TransferRun.h"
#include "support/TestArchives.h"

using namespace kestrin;

namespace {

class TransferRunTest : public CopyTest
{
protected:
    void SetUp() override
    {
        if (!server.Unavailable().empty())
            GTEST_SKIP() << server.Unavailable();
        fs::create_directory(upload);
    }

    TransferPlace Server(const std::string &folder) const
    {
        FtpSession session;
        session.name = "site";
        session.host = "127.0.0.1";
        session.port = std::to_string(server.Port());
        session.user = "anonymous";
        session.pass = "kestrin@";
        return {TransferPlace::Kind::FtpFolder, folder, session};
    }

    void RunPlan(const platform::Message &request,
                 const TransferPlace &from,
                 const TransferPlace &to)
    {
        const TransferPlan plan = TransferPlanner::Plan(request, from, to);
        ASSERT_FALSE(plan.Refused()) << plan.refusal->text;
        TransferRun(plan, control).Run();
    }

    // How many work folders stand in the transfers' folder now.
    size_t WorkFolders() const
    {
        const fs::path work = home.TransferWork();
        if (!fs::exists(work))
            return 0;
        return size_t(std::distance(fs::directory_iterator(work), fs::directory_iterator()));
    }

    // What the zip at `archive` holds: its top `folders` and `files`
    // unpacked into a new folder `into`.
    std::map<std::string, std::string> ZipTree(const std::string &archive,
                                               const std::string &into,
                                               const std::vector<std::string> &folders,
                                               const std::vector<std::string> &files)
    {
        fs::create_directory(into);
        FakeCopyControl quiet;
        CopyEngine(Unpack(archive, "", folders, files), into, quiet).Run();
        return Tree(into);
    }

    VsftpdServer server;
    const std::string upload = server.Root() + "/upload";
    const std::string big = RandomBytes(6 * 1024 * 1024, 7);
};

} // namespace

TEST_F(TransferRunTest, ArchiveMembersReachTheServerAndTheWorkFolderGoes)
{
    const std::string archive = src + "/bundle.zip";
    WriteTestArchive(archive,
                     "zip",
                     {{"a-big.bin", big},
                      FolderMember("docs/"),
                      {"docs/guide.txt", "guide"},
                      {"left-out.txt", "not asked for"}});
    platform::Message members = Unpack(archive, "", {"docs"}, {"a-big.bin"});
    members.AddString("From", src);
    const TransferPlace archivePlace{TransferPlace::Kind::Archive, src, {}};

    size_t workFoldersDuringUpload = 0;
    control.stopWhen = [&] {
        if (!control.transfers.empty() && workFoldersDuringUpload == 0)
            workFoldersDuringUpload = WorkFolders();
        return false;
    };
    RunPlan(members, archivePlace, Server(upload));
    EXPECT_TRUE(control.errors.empty()) << control.errors[0].text;
    EXPECT_EQ(Tree(upload),
              (std::map<std::string, std::string>{{"a-big.bin", big},
                                                  {"docs", "/"},
                                                  {"docs/guide.txt", "guide"}}));
    EXPECT_EQ(workFoldersDuringUpload, 1u) << "the members went through a work folder";
    EXPECT_EQ(WorkFolders(), 0u);

    // Stopped while the first member is on its way: nothing of it stays on
    // the server, and the work folder goes as well.
    fs::create_directory(upload + "/second");
    control = FakeCopyControl();
    control.stopAfterChunks = 1;
    RunPlan(members, archivePlace, Server(upload + "/second"));
    EXPECT_TRUE(fs::is_empty(upload + "/second"));
    EXPECT_EQ(WorkFolders(), 0u);
}

TEST_F(TransferRunTest, LocalFilesPackedOntoTheServer)
{
    WriteFileBytes(src + "/a.txt", "alpha");
    fs::create_directory(src + "/sub");
    WriteFileBytes(src + "/sub/b.bin", big);
    SetModified(src + "/a.txt", 1500000000);
    platform::Message pack = Request(kMsgPackRequest, {src + "/a.txt", src + "/sub"}, "Pack");
    pack.AddString("From", src);

    RunPlan(pack, TransferPlace::LocalFolder(src), Server(upload));
    EXPECT_TRUE(control.errors.empty()) << control.errors[0].text;
    ASSERT_TRUE(fs::is_regular_file(upload + "/src.zip"));
    EXPECT_EQ(ZipTree(upload + "/src.zip", dest + "/unpacked", {"sub"}, {"a.txt"}), Tree(src));
    EXPECT_EQ(fs::last_write_time(dest + "/unpacked/a.txt"), fs::last_write_time(src + "/a.txt"));
    EXPECT_EQ(WorkFolders(), 0u);

    // Stopped while packing: no zip, on the server or anywhere else.
    fs::create_directory(upload + "/second");
    control = FakeCopyControl();
    control.stopWhen = [&] { return control.archiveSteps.size() >= 2; };
    RunPlan(pack, TransferPlace::LocalFolder(src), Server(upload + "/second"));
    EXPECT_FALSE(control.archiveSteps.empty());
    EXPECT_TRUE(fs::is_empty(upload + "/second"));
    EXPECT_EQ(WorkFolders(), 0u);
}

TEST_F(TransferRunTest, FilesOnTheServerPackedIntoALocalZip)
{
    WriteFileBytes(upload + "/one.txt", "one");
    fs::create_directory(upload + "/tree");
    WriteFileBytes(upload + "/tree/big.bin", big);
    SetModified(upload + "/one.txt", 1500000000);
    platform::Message pack = FtpRequest(kMsgPackRequest, server.Port(), upload);
    pack.AddString("FtpFile", "one.txt");
    pack.AddString("FtpDir", "tree");
    pack.AddString("TypeOfCopy", "Pack");

    RunPlan(pack, Server(upload), TransferPlace::LocalFolder(dest));
    EXPECT_TRUE(control.errors.empty()) << control.errors[0].text;
    // Named after the server's folder the files came from.
    ASSERT_TRUE(fs::is_regular_file(dest + "/upload.zip"));
    EXPECT_EQ(ZipTree(dest + "/upload.zip", src + "/unpacked", {"tree"}, {"one.txt"}), Tree(upload));
    // The server's date came down with the file and went into the zip.
    EXPECT_EQ(fs::last_write_time(src + "/unpacked/one.txt"),
              fs::last_write_time(upload + "/one.txt"));
    EXPECT_EQ(WorkFolders(), 0u);

    // Stopped while downloading: the zip is never made.
    fs::remove(dest + "/upload.zip");
    control = FakeCopyControl();
    control.stopAfterChunks = 1;
    RunPlan(pack, Server(upload), TransferPlace::LocalFolder(dest));
    EXPECT_TRUE(fs::is_empty(dest));
    EXPECT_EQ(WorkFolders(), 0u);
}
