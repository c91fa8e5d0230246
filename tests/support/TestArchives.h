#pragma once

// Real archives for the tests, written with libarchive: members given by
// their paths exactly as the archive is to name them (hostile ones too).

#include <archive.h>
#include <archive_entry.h>
#include <ctime>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <vector>

struct TestMember
{
    enum Kind { File, Folder, Link, Node };

    std::string path;
    std::string data;
    Kind kind = File;
    mode_t permissions = 0644;
    time_t modified = 1000000000;
    std::string linkTarget = {};
    // For a Node: S_IFCHR, S_IFBLK or S_IFIFO, and the device it stands for.
    mode_t nodeType = 0;
    dev_t device = 0;
};

inline TestMember FolderMember(const std::string &path, mode_t permissions = 0755)
{
    return {path, "", TestMember::Folder, permissions};
}

inline TestMember LinkMember(const std::string &path, const std::string &target)
{
    return {path, "", TestMember::Link, 0777, 1000000000, target};
}

// A device node or a pipe; `device` made with makedev().
inline TestMember NodeMember(const std::string &path, mode_t type, dev_t device = 0)
{
    return {path, "", TestMember::Node, 0666, 1000000000, "", type, device};
}

// "zip", "tar.gz", "tar.xz", "7z", "cpio" ...
// With a `passphrase`, a zip's members are encrypted.
inline void WriteTestArchive(const std::string &path,
                             const std::string &kind,
                             const std::vector<TestMember> &members,
                             const std::string &passphrase = "")
{
    struct archive *out = archive_write_new();
    if (kind == "zip")
        archive_write_set_format_zip(out);
    else if (kind == "7z")
        archive_write_set_format_7zip(out);
    else if (kind == "cpio")
        archive_write_set_format_cpio_newc(out);
    else
        archive_write_set_format_pax_restricted(out);
    if (kind == "tar.gz")
        archive_write_add_filter_gzip(out);
    else if (kind == "tar.xz")
        archive_write_add_filter_xz(out);
    if (!passphrase.empty()) {
        ASSERT_EQ(archive_write_set_options(out, "zip:encryption=zipcrypt"), ARCHIVE_OK);
        ASSERT_EQ(archive_write_set_passphrase(out, passphrase.c_str()), ARCHIVE_OK);
    }
    ASSERT_EQ(archive_write_open_filename(out, path.c_str()), ARCHIVE_OK)
        << archive_error_string(out);
    for (const TestMember &member : members) {
        struct archive_entry *entry = archive_entry_new();
        archive_entry_set_pathname(entry, member.path.c_str());
        const mode_t type = member.kind == TestMember::Folder ? S_IFDIR
                            : member.kind == TestMember::Link ? S_IFLNK
                            : member.kind == TestMember::Node ? member.nodeType
                                                              : S_IFREG;
        archive_entry_set_mode(entry, type | member.permissions);
        archive_entry_set_mtime(entry, member.modified, 0);
        archive_entry_set_size(entry, la_int64_t(member.data.size()));
        if (member.kind == TestMember::Link)
            archive_entry_set_symlink(entry, member.linkTarget.c_str());
        if (member.kind == TestMember::Node)
            archive_entry_set_rdev(entry, member.device);
        ASSERT_EQ(archive_write_header(out, entry), ARCHIVE_OK) << archive_error_string(out);
        if (!member.data.empty()) {
            ASSERT_EQ(archive_write_data(out, member.data.data(), member.data.size()),
                      la_ssize_t(member.data.size()));
        }
        archive_entry_free(entry);
    }
    ASSERT_EQ(archive_write_close(out), ARCHIVE_OK);
    archive_write_free(out);
}
