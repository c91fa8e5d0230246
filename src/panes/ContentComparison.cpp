#include "panes/ContentComparison.h"

#include "platform/File.h"
#include "platform/PathNames.h"

#include <cstring>
#include <memory>

namespace kestrin {

namespace {

constexpr size_t kBlock = 256 * 1024;

} // namespace

bool ContentComparison::SameBytes(const std::string &left,
                                  const std::string &right,
                                  Progress &progress,
                                  const std::atomic<bool> &stop)
{
    platform::File first(left, B_READ_ONLY);
    platform::File second(right, B_READ_ONLY);
    if (first.InitCheck() != B_OK || second.InitCheck() != B_OK)
        return false;
    first.AdviseSequential();
    second.AdviseSequential();
    const auto buffers = std::make_unique<char[]>(2 * kBlock);
    char *a = buffers.get();
    char *b = a + kBlock;
    while (!stop.load()) {
        const ssize_t got = first.Read(a, kBlock);
        if (got < 0)
            return false;
        // A file that grew or shrank since it was listed differs too.
        ssize_t other = 0;
        while (other < got) {
            const ssize_t more = second.Read(b + other, size_t(got - other));
            if (more <= 0)
                break;
            other += more;
        }
        if (other != got || std::memcmp(a, b, size_t(got)) != 0)
            return false;
        progress.bytes += got;
        if (got == 0)
            return second.Read(b, 1) == 0;
    }
    return false;
}

std::vector<std::string> ContentComparison::Differing(
    const std::string &leftFolder,
    const std::string &rightFolder,
    const std::vector<FolderComparison::Entry> &files,
    Progress &progress,
    const std::atomic<bool> &stop)
{
    std::vector<std::string> differing;
    for (const FolderComparison::Entry &file : files) {
        if (stop.load())
            break;
        const int64_t before = progress.bytes.load();
        if (!SameBytes(platform::JoinPath(leftFolder, file.name),
                       platform::JoinPath(rightFolder, file.name),
                       progress,
                       stop)
            && !stop.load())
            differing.push_back(file.name);
        // The bar moves by the listed size whatever was read of the pair.
        progress.bytes = before + file.size;
        progress.files++;
    }
    return differing;
}

} // namespace kestrin
