// kestrin-copy-driver SOURCE... DESTINATION
// Copies with Kestrin's copy engine and no window: what the progress window
// would show is dropped, and an existing target is replaced.

#include "fileops/CopyControl.h"
#include "fileops/CopyEngine.h"
#include "fileops/FileOpsMessages.h"
#include "platform/Entry.h"

#include <cstdio>

namespace {

class HeadlessControl : public kestrin::CopyControl
{
public:
    void BatchStarted(int32_t, const std::string &, const std::string &) override {}
    void FileStarted(const std::string &, const std::string &, double) override {}
    void ChunkCopied(int64_t, const std::string &, int64_t) override {}
    void SetProgressVisible(bool) override {}
    bool StopRequested() override { return false; }
    int32_t AskOverwrite(const kestrin::OverwriteQuestion &) override
    {
        return kestrin::kOverwriteAll;
    }
    int32_t FileError(const platform::Alert &alert) override
    {
        fprintf(stderr, "alert: %s\n", alert.text.c_str());
        errors++;
        return 0;
    }
    void ArchiveProgress(int32_t, int32_t, const std::string &, const std::string &) override {}

    int errors = 0;
};

} // namespace

int main(int argc, char **argv)
{
    if (argc < 3) {
        fprintf(stderr, "usage: kestrin-copy-driver SOURCE... DESTINATION\n");
        return 2;
    }
    platform::Message request(kestrin::kMsgCopyRequest);
    request.AddString("TypeOfCopy", "Copy");
    for (int i = 1; i < argc - 1; i++) {
        entry_ref ref;
        if (platform::Entry(argv[i]).GetRef(&ref) != B_OK) {
            fprintf(stderr, "kestrin-copy-driver: can't read %s\n", argv[i]);
            return 1;
        }
        request.AddRef("refs", ref);
    }
    HeadlessControl control;
    kestrin::CopyEngine(request, argv[argc - 1], control).Run();
    return control.errors == 0 ? 0 : 1;
}
