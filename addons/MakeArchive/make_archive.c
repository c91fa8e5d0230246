/*
 * MakeArchive: packs the selected entries into a zip archive in the folder
 * they were selected in, named after the first of them ("<first>.zip", or
 * "<first> 2.zip" and so on when that name is taken; nothing is ever
 * overwritten). Folders are packed with everything in them, links as links,
 * files byte for byte. On failure no archive is left behind.
 */

#include <kestrin/addon.h>

#include <archive.h>
#include <archive_entry.h>
#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <locale.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#define CHUNK_SIZE (256 * 1024)
/* "<first> 2.zip" up to this number; beyond it something is wrong. */
#define MAX_NUMBER 10000

struct packer
{
    struct archive *zip;
    /* The archive being written, which a selected folder may hold. */
    dev_t archive_device;
    ino_t archive_node;
    char *chunk;
};

/* Every failure ends here: one line for the user, then -1. */
static int fail(const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    fputs("MakeArchive: ", stderr);
    vfprintf(stderr, format, arguments);
    fputc('\n', stderr);
    va_end(arguments);
    return -1;
}

/* A new string "<a><separator><b>", or NULL. */
static char *join(const char *a, const char *separator, const char *b)
{
    const size_t length = strlen(a) + strlen(separator) + strlen(b) + 1;
    char *joined = malloc(length);
    if (joined)
        snprintf(joined, length, "%s%s%s", a, separator, b);
    return joined;
}

static int is_dot_or_dot_dot(const char *name)
{
    return strcmp(name, ".") == 0 || strcmp(name, "..") == 0;
}

/* The target of the link at `path`, whatever its length; NULL on failure. */
static char *read_link(const char *path, off_t size_hint)
{
    size_t size = size_hint > 0 ? (size_t) size_hint + 1 : 256;
    for (;;) {
        char *target = malloc(size);
        if (!target)
            return NULL;
        const ssize_t length = readlink(path, target, size);
        if (length < 0) {
            free(target);
            return NULL;
        }
        if ((size_t) length < size) {
            target[length] = '\0';
            return target;
        }
        /* The link grew since lstat; try again with room to spare. */
        free(target);
        size *= 2;
    }
}

/* Well-formed UTF-8: no overlong forms, no surrogates, nothing past U+10FFFF. */
static int is_utf8(const char *text)
{
    const unsigned char *byte = (const unsigned char *) text;
    while (*byte) {
        int follow;
        unsigned int code;
        if (*byte < 0x80) {
            byte++;
            continue;
        } else if ((*byte & 0xe0) == 0xc0) {
            follow = 1;
            code = *byte & 0x1f;
        } else if ((*byte & 0xf0) == 0xe0) {
            follow = 2;
            code = *byte & 0x0f;
        } else if ((*byte & 0xf8) == 0xf0) {
            follow = 3;
            code = *byte & 0x07;
        } else {
            return 0;
        }
        const unsigned int least[] = {0, 0x80, 0x800, 0x10000};
        for (int i = 1; i <= follow; i++) {
            if ((byte[i] & 0xc0) != 0x80)
                return 0;
            code = code << 6 | (byte[i] & 0x3f);
        }
        if (code < least[follow] || code > 0x10ffff || (code >= 0xd800 && code <= 0xdfff))
            return 0;
        byte += follow + 1;
    }
    return 1;
}

static int write_header(struct packer *packer, struct archive_entry *entry, const char *path)
{
    /* Zip readers take a name for UTF-8 only when its entry says so, and
     * libarchive says so for a name that is not ASCII while the character
     * set of the locale is UTF-8. Names are bytes here and need not be
     * UTF-8: those that are not are stored as they are, without the flag.
     * Where there is no C.UTF-8 locale, no name gets the flag. */
    const char *name = archive_entry_pathname(entry);
    setlocale(LC_CTYPE, name && is_utf8(name) ? "C.UTF-8" : "C");

    /* ARCHIVE_WARN: a name the writer could not convert, which it stores as
     * it is. */
    if (archive_write_header(packer->zip, entry) < ARCHIVE_WARN)
        return fail("cannot pack \"%s\": %s", path, archive_error_string(packer->zip));
    return 0;
}

static int pack_file(struct packer *packer, const char *path, const char *name)
{
    const int fd = open(path, O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
    if (fd < 0)
        return fail("cannot read \"%s\": %s", path, strerror(errno));
    struct stat info;
    if (fstat(fd, &info) != 0) {
        const int error = errno;
        close(fd);
        return fail("cannot read \"%s\": %s", path, strerror(error));
    }

    struct archive_entry *entry = archive_entry_new();
    archive_entry_copy_stat(entry, &info);
    archive_entry_set_pathname(entry, name);
    int status = write_header(packer, entry, path);
    archive_entry_free(entry);

    off_t left = info.st_size;
    while (status == 0 && left > 0) {
        const size_t wanted = left < CHUNK_SIZE ? (size_t) left : CHUNK_SIZE;
        const ssize_t count = read(fd, packer->chunk, wanted);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            status = fail("cannot read \"%s\": %s", path, strerror(errno));
        else if (count == 0)
            status = fail("\"%s\" shrank while it was being packed", path);
        else if (archive_write_data(packer->zip, packer->chunk, (size_t) count) != count)
            status = fail("cannot pack \"%s\": %s", path, archive_error_string(packer->zip));
        else
            left -= count;
    }
    close(fd);
    return status;
}

static int pack(struct packer *packer, const char *path, const char *name);

static int pack_folder(struct packer *packer,
                       const char *path,
                       const char *name,
                       const struct stat *info)
{
    struct archive_entry *entry = archive_entry_new();
    archive_entry_copy_stat(entry, info);
    archive_entry_set_pathname(entry, name);
    int status = write_header(packer, entry, path);
    archive_entry_free(entry);
    if (status != 0)
        return status;

    DIR *folder = opendir(path);
    if (!folder)
        return fail("cannot read the folder \"%s\": %s", path, strerror(errno));
    for (;;) {
        errno = 0;
        const struct dirent *item = readdir(folder);
        if (!item) {
            if (errno != 0)
                status = fail("cannot read the folder \"%s\": %s", path, strerror(errno));
            break;
        }
        if (is_dot_or_dot_dot(item->d_name))
            continue;
        char *child_path = join(path, strcmp(path, "/") == 0 ? "" : "/", item->d_name);
        char *child_name = join(name, "/", item->d_name);
        status = child_path && child_name ? pack(packer, child_path, child_name)
                                          : fail("out of memory");
        free(child_path);
        free(child_name);
        if (status != 0)
            break;
    }
    closedir(folder);
    return status;
}

static int pack_link(struct packer *packer,
                     const char *path,
                     const char *name,
                     const struct stat *info)
{
    char *target = read_link(path, info->st_size);
    if (!target)
        return fail("cannot read the link \"%s\": %s", path, strerror(errno));
    struct archive_entry *entry = archive_entry_new();
    archive_entry_copy_stat(entry, info);
    archive_entry_set_size(entry, 0);
    archive_entry_set_pathname(entry, name);
    archive_entry_set_symlink(entry, target);
    const int status = write_header(packer, entry, path);
    archive_entry_free(entry);
    free(target);
    return status;
}

/* The entry at `path`, stored under `name` in the archive. */
static int pack(struct packer *packer, const char *path, const char *name)
{
    struct stat info;
    if (lstat(path, &info) != 0)
        return fail("cannot read \"%s\": %s", path, strerror(errno));
    if (info.st_dev == packer->archive_device && info.st_ino == packer->archive_node)
        return 0;
    if (S_ISREG(info.st_mode))
        return pack_file(packer, path, name);
    if (S_ISDIR(info.st_mode))
        return pack_folder(packer, path, name, &info);
    if (S_ISLNK(info.st_mode))
        return pack_link(packer, path, name, &info);
    /* Devices, pipes and sockets have no data a zip file could hold. */
    fprintf(stderr, "MakeArchive: left out \"%s\": not a file, folder or link\n", path);
    return 0;
}

/* Creates the archive file under the first free name; its descriptor, or -1
 * with *created NULL. */
static int create_archive(const char *folder, const char *first, char **created)
{
    const char *separator = strcmp(folder, "/") == 0 ? "" : "/";
    *created = NULL;
    for (int number = 1; number <= MAX_NUMBER; number++) {
        char suffix[32];
        if (number == 1)
            snprintf(suffix, sizeof suffix, ".zip");
        else
            snprintf(suffix, sizeof suffix, " %d.zip", number);
        const size_t length = strlen(folder) + strlen(separator) + strlen(first) + strlen(suffix)
                              + 1;
        char *path = malloc(length);
        if (!path) {
            fail("out of memory");
            return -1;
        }
        snprintf(path, length, "%s%s%s%s", folder, separator, first, suffix);
        /* O_EXCL: an archive that appears meanwhile is never overwritten. */
        const int fd = open(path, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (fd >= 0) {
            *created = path;
            return fd;
        }
        const int error = errno;
        if (error != EEXIST) {
            fail("cannot create \"%s\": %s", path, strerror(error));
            free(path);
            return -1;
        }
        free(path);
    }
    fail("cannot find a free name for the archive of \"%s\" in \"%s\"", first, folder);
    return -1;
}

KESTRIN_ADDON_EXPORT int process_refs(const struct kestrin_entry_ref *folder,
                                      const struct kestrin_entry_ref *entries,
                                      size_t count,
                                      void *reserved)
{
    (void) reserved;
    if (count == 0) {
        fail("nothing is selected");
        return 1;
    }
    for (size_t i = 0; i < count; i++) {
        const char *name = entries[i].name;
        if (name[0] == '\0' || is_dot_or_dot_dot(name) || strchr(name, '/')) {
            fail("cannot pack an entry named \"%s\"", name);
            return 1;
        }
    }

    char *archive_path = NULL;
    const int fd = create_archive(folder->path, entries[0].name, &archive_path);
    if (fd < 0)
        return 1;

    struct packer packer = {0};
    struct stat info;
    int status = fstat(fd, &info) == 0
                     ? 0
                     : fail("cannot read \"%s\": %s", archive_path, strerror(errno));
    packer.archive_device = info.st_dev;
    packer.archive_node = info.st_ino;
    packer.chunk = malloc(CHUNK_SIZE);
    packer.zip = archive_write_new();
    if (status == 0 && (!packer.chunk || !packer.zip))
        status = fail("out of memory");
    if (status == 0
        && (archive_write_set_format_zip(packer.zip) != ARCHIVE_OK
            || archive_write_open_fd(packer.zip, fd) != ARCHIVE_OK))
        status = fail("cannot write \"%s\": %s", archive_path, archive_error_string(packer.zip));

    for (size_t i = 0; status == 0 && i < count; i++)
        status = pack(&packer, entries[i].path, entries[i].name);

    /* Closing writes the zip's central directory: it can fail too. */
    if (status == 0 && archive_write_close(packer.zip) != ARCHIVE_OK)
        status = fail("cannot write \"%s\": %s", archive_path, archive_error_string(packer.zip));
    if (packer.zip)
        archive_write_free(packer.zip);
    if (close(fd) != 0 && status == 0)
        status = fail("cannot write \"%s\": %s", archive_path, strerror(errno));
    if (status != 0)
        unlink(archive_path);

    free(packer.chunk);
    free(archive_path);
    return status == 0 ? 0 : 1;
}
