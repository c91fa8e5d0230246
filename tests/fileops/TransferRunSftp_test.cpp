// The SFTP pairings that go through a work folder, planned and run against
// OpenSSH's sshd on 127.0.0.1: members of an archive onto the server, files
// on it packed into a local zip. Nothing of the work folder stays.

#include "SftpCopyTest.h"

#include "fileops/TransferPlanner.h"
#include "fileops/TransferRun.h"
#include "support/TestArchives.h"

using namespace kestrin;

namespace {

class TransferRunSftp : public SftpCopyTest
{
protected:
    TransferPlace Server(const std::string &folder) const
    {
        FtpSession session;
        session.name = "box";
        session.host = "127.0.0.1";
        session.port = std::to_string(server.Port());
        session.user = SshdServer::User();
        return {TransferPlace::Kind::SftpFolder, folder, session};
    }

    void RunPlan(const platform::Message &request,
                 const TransferPlace &from,
                 const TransferPlace &to)
    {
        const TransferPlan plan = TransferPlanner::Plan(request, from, to);
        ASSERT_FALSE(plan.Refused()) << plan.refusal->text;
        TransferRun(plan, control).Run();
        EXPECT_TRUE(control.errors.empty()) << control.errors[0].text;
        EXPECT_FALSE(fs::exists(home.TransferWork()) && !fs::is_empty(home.TransferWork()))
            << "the work folder goes";
    }

    const std::string big = RandomBytes(3 * 1024 * 1024, 9);
};

} // namespace

TEST_F(TransferRunSftp, ArchiveMembersGoUpAndServerFilesComeDownIntoAZip)
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
    fs::create_directory(remote + "/up");
    RunPlan(members, {TransferPlace::Kind::Archive, src, {}}, Server(remote + "/up"));
    EXPECT_EQ(Tree(remote + "/up"),
              (std::map<std::string, std::string>{{"a-big.bin", big},
                                                  {"docs", "/"},
                                                  {"docs/guide.txt", "guide"}}));
    // The server is this machine: the last step must have been the upload.
    ASSERT_FALSE(control.batches.empty());
    EXPECT_EQ(control.batches.back().text, "2 Files or Directories");

    // The same files packed from the server into a zip named after its folder.
    platform::Message pack = SftpRequest(kMsgPackRequest, remote + "/up");
    pack.AddString("FtpFile", "a-big.bin");
    pack.AddString("FtpDir", "docs");
    pack.AddString("TypeOfCopy", "Pack");
    RunPlan(pack, Server(remote + "/up"), TransferPlace::LocalFolder(dest));
    ASSERT_TRUE(fs::is_regular_file(dest + "/up.zip"));
    fs::create_directory(src + "/unpacked");
    FakeCopyControl quiet;
    CopyEngine(Unpack(dest + "/up.zip", "", {"docs"}, {"a-big.bin"}), src + "/unpacked", quiet).Run();
    EXPECT_EQ(Tree(src + "/unpacked"), Tree(remote + "/up"));
}
