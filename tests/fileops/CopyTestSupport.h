#pragma once

// What the copy engine's tests share: a progress window that records what it
// is told (error alerts included) and answers overwrite questions from a
// script, and real folders to copy between.

#include "fileops/CopyControl.h"
#include "fileops/CopyEngine.h"
#include "fileops/FileOpsMessages.h"
#include "platform/AlertRecorder.h"
#include "platform/Entry.h"
#include "support/TempHome.h"

#include <QTemporaryDir>
#include <deque>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <sys/stat.h>

namespace fs = std::filesystem;

class FakeCopyControl : public kestrin::CopyControl
{
public:
    struct Batch
    {
        int32_t total;
        std::string text, trailingText;
    };
    struct Chunk
    {
        int64_t bytes;
        std::string leafName;
        int64_t fileTotal;
    };
    struct Transfer
    {
        int32_t percentDelta;
        std::string leafName, fileTrailing, mainTrailing;
    };
    struct ArchiveStep
    {
        int32_t overall, fileProgress;
        std::string leafName, memberName;

        bool operator==(const ArchiveStep &other) const = default;
    };

    void BatchStarted(int32_t total, const std::string &text, const std::string &trailing) override
    {
        batches.push_back({total, text, trailing});
    }
    void FileStarted(const std::string &, const std::string &target, double) override
    {
        startedTargets.push_back(target);
    }
    void ChunkCopied(int64_t bytes, const std::string &leafName, int64_t fileTotal) override
    {
        chunks.push_back({bytes, leafName, fileTotal});
        if (onChunk)
            onChunk(chunks.size());
    }
    void TransferProgress(int32_t percentDelta,
                          const std::string &leafName,
                          const std::string &fileTrailing,
                          const std::string &mainTrailing) override
    {
        transfers.push_back({percentDelta, leafName, fileTrailing, mainTrailing});
    }
    void SetProgressVisible(bool visible) override { visibility.push_back(visible); }
    // An FTP transfer's progress calls count as chunks.
    bool StopRequested() override
    {
        return chunks.size() + transfers.size() >= stopAfterChunks || (stopWhen && stopWhen());
    }
    int32_t AskOverwrite(const kestrin::OverwriteQuestion &question) override
    {
        questions.push_back(question);
        if (answers.empty()) {
            ADD_FAILURE() << "unexpected question about " << question.overwriteLine;
            return kestrin::kSkip;
        }
        const int32_t answer = answers.front();
        answers.pop_front();
        return answer;
    }
    // Every alert of the engine has a single button.
    int32_t FileError(const platform::Alert &alert) override
    {
        errors.push_back(alert);
        return 0;
    }
    void ArchiveProgress(int32_t overall,
                         int32_t fileProgress,
                         const std::string &leafName,
                         const std::string &memberName) override
    {
        archiveSteps.push_back({overall, fileProgress, leafName, memberName});
    }

    std::deque<int32_t> answers;
    size_t stopAfterChunks = size_t(-1) >> 1;
    // Another reason to stop, asked each time the engine asks.
    std::function<bool()> stopWhen;
    std::function<void(size_t chunkCount)> onChunk;

    std::vector<Batch> batches;
    std::vector<std::string> startedTargets;
    std::vector<Chunk> chunks;
    std::vector<Transfer> transfers;
    std::vector<bool> visibility;
    std::vector<kestrin::OverwriteQuestion> questions;
    std::vector<platform::Alert> errors;
    std::vector<ArchiveStep> archiveSteps;
};

// What the engine says wherever a name it makes is taken already.
inline const platform::Alert kFileExistsAlert{"Sorry Charley",
                                              "Strange but this file exists.",
                                              {"Even Scotty Can't Fix it"},
                                              B_STOP_ALERT,
                                              B_WIDTH_FROM_LABEL};

inline entry_ref RefFor(const std::string &path)
{
    entry_ref ref;
    EXPECT_EQ(platform::Entry(path).GetRef(&ref), B_OK) << path;
    return ref;
}

// A request to the FTP server on 127.0.0.1 at `port`, as anonymous.
inline platform::Message FtpRequest(uint32_t what, unsigned port, const std::string &ftpPath)
{
    platform::Message request(what);
    request.AddString("Host", "127.0.0.1");
    request.AddString("User", "anonymous");
    request.AddString("Password", "kestrin@");
    request.AddString("FtpPath", ftpPath);
    request.AddInt32("Port", int32_t(port));
    return request;
}

inline std::vector<std::string> TextsOf(const std::vector<platform::Alert> &alerts)
{
    std::vector<std::string> texts;
    for (const platform::Alert &alert : alerts)
        texts.push_back(alert.text);
    return texts;
}

inline platform::Message Request(uint32_t what,
                                 const std::vector<std::string> &paths,
                                 const char *typeOfCopy = nullptr)
{
    platform::Message request(what);
    for (const std::string &path : paths)
        request.AddRef("refs", RefFor(path));
    if (typeOfCopy)
        request.AddString("TypeOfCopy", typeOfCopy);
    return request;
}

// Every entry below `root` by its relative path, with a file's bytes ("/" for
// a folder).
inline std::map<std::string, std::string> Tree(const std::string &root)
{
    std::map<std::string, std::string> tree;
    for (const auto &entry : fs::recursive_directory_iterator(root)) {
        const std::string relative = fs::relative(entry.path(), root).string();
        tree[relative] = entry.is_directory() ? "/" : ReadFileBytes(entry.path().string()).value();
    }
    return tree;
}

// An unpack request (618) of members of `archive` below its folder `from`.
inline platform::Message Unpack(const std::string &archive,
                                const std::string &from,
                                const std::vector<std::string> &folders,
                                const std::vector<std::string> &files)
{
    platform::Message request(kestrin::kMsgUnpackRequest);
    request.AddString("Archive", archive);
    request.AddString("CopyFrom", from);
    for (const std::string &folder : folders)
        request.AddString("ZipDir", folder);
    for (const std::string &file : files)
        request.AddString("ZipFile", file);
    request.AddString("TypeOfCopy", "UnPack");
    return request;
}

inline void SetModified(const std::string &path, time_t when)
{
    const struct timespec times[2] = {{when, 0}, {when, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW), 0) << path;
}

// An entry's own access and modification times (a link's, not its
// target's), to the nanosecond.
struct EntryTimes
{
    timespec accessed{}, modified{};

    bool operator==(const EntryTimes &other) const
    {
        return accessed.tv_sec == other.accessed.tv_sec
               && accessed.tv_nsec == other.accessed.tv_nsec
               && modified.tv_sec == other.modified.tv_sec
               && modified.tv_nsec == other.modified.tv_nsec;
    }
    friend std::ostream &operator<<(std::ostream &out, const EntryTimes &times)
    {
        return out << "accessed " << times.accessed.tv_sec << "." << times.accessed.tv_nsec
                   << ", modified " << times.modified.tv_sec << "." << times.modified.tv_nsec;
    }
};

inline EntryTimes TimesOf(const std::string &path)
{
    struct stat info = {};
    EXPECT_EQ(lstat(path.c_str(), &info), 0) << path;
    return {info.st_atim, info.st_mtim};
}

// Sets them and answers them as the file system keeps them, which may be
// coarser than asked.
inline EntryTimes SetTimes(const std::string &path, const EntryTimes &times)
{
    const struct timespec both[2] = {times.accessed, times.modified};
    EXPECT_EQ(utimensat(AT_FDCWD, path.c_str(), both, AT_SYMLINK_NOFOLLOW), 0) << path;
    return TimesOf(path);
}

// Bytes that no compressor shrinks, the same for the same seed.
inline std::string RandomBytes(size_t size, unsigned seed)
{
    std::mt19937 generator(seed);
    std::string bytes(size, '\0');
    for (char &byte : bytes)
        byte = char(generator());
    return bytes;
}

inline bool Exists(const std::string &path)
{
    struct stat info;
    return lstat(path.c_str(), &info) == 0;
}

// A folder on /dev/shm, another file system than the temporary home's.
inline std::string ShmPath(const QTemporaryDir &folder)
{
    EXPECT_TRUE(folder.isValid());
    return folder.path().toStdString();
}

inline constexpr char kShmTemplate[] = "/dev/shm/kestrin-test-XXXXXX";

// A request's source and destination folders in a fresh home, with every
// alert recorded.
class CopyTest : public ::testing::Test
{
protected:
    CopyTest()
    {
        fs::create_directory(src);
        fs::create_directory(dest);
    }

    void Run(const platform::Message &request, const std::string &destination)
    {
        kestrin::CopyEngine(request, destination, control).Run();
    }

    TempHome home;
    platform::AlertRecorder alerts;
    FakeCopyControl control;
    const std::string src = home.Root() + "/src";
    const std::string dest = home.Root() + "/dest";
};
