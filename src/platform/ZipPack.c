/*
 * Packing entries into a zip archive with libarchive: what the MakeArchive
 * add-on and Kestrin's copy engine (Ctrl+F5) both do, written once. C, so
 * that the add-on links it without Kestrin's other libraries.
 */

#include "platform/ZipPack.h"

#include <archive.h>
#include <archive_entry.h>
#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <locale.h>
#include <malloc.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#define CHUNK_SIZE (256 * 1024)

struct packer
{
    const struct kestrin_zip_hooks *hooks;
    struct archive *zip;
    /* The archive being written, which a selected folder may hold. */
    dev_t archive_device;
    ino_t archive_node;
    char *chunk;
    long long all_bytes;
    /* Names are converted as UTF-8 only when they are UTF-8 (see write_header). */
    locale_t utf8;
    locale_t plain;
};

/* One line for the user: a failure ends the packing (-1), a notice does not. */
static int say(struct packer *packer, int fatal, const char *format, va_list arguments)
{
    char text[1024];
    vsnprintf(text, sizeof text, format, arguments);
    if (packer->hooks && packer->hooks->report)
        packer->hooks->report(packer->hooks->data, fatal, text);
    return KESTRIN_ZIP_FAILED;
}

static int fail(struct packer *packer, const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const int status = say(packer, 1, format, arguments);
    va_end(arguments);
    return status;
}

static void notice(struct packer *packer, const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    say(packer, 0, format, arguments);
    va_end(arguments);
}

/* Tells the caller how far packing is; KESTRIN_ZIP_STOPPED when it says stop. */
static int progress(struct packer *packer, const char *name, long long member_bytes)
{
    const struct kestrin_zip_hooks *hooks = packer->hooks;
    if (!hooks || !hooks->progress)
        return KESTRIN_ZIP_DONE;
    return hooks->progress(hooks->data, name, member_bytes, packer->all_bytes)
               ? KESTRIN_ZIP_DONE
               : KESTRIN_ZIP_STOPPED;
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

/* What went wrong in writing a member: the archive's own file (a full disk)
 * when the writer saw an error of the system, else the member. */
static int write_failed(struct packer *packer, const char *path)
{
    const int error = archive_errno(packer->zip);
    if (error > 0)
        return fail(packer, "cannot write the archive: %s", strerror(error));
    return fail(packer, "cannot pack \"%s\": %s", path, archive_error_string(packer->zip));
}

static int write_header(struct packer *packer, struct archive_entry *entry, const char *path)
{
    /* Zip readers take a name for UTF-8 only when its entry says so, and
     * libarchive says so for a name that is not ASCII while the character
     * set of the locale is UTF-8. Names are bytes here and need not be
     * UTF-8: those that are not are stored as they are, without the flag.
     * Where there is no C.UTF-8 locale, no name gets the flag. The locale is
     * this thread's own: other threads of the caller keep theirs. */
    const char *name = archive_entry_pathname(entry);
    uselocale(name && is_utf8(name) && packer->utf8 ? packer->utf8 : packer->plain);

    /* ARCHIVE_WARN: a name the writer could not convert, which it stores as
     * it is. */
    if (archive_write_header(packer->zip, entry) < ARCHIVE_WARN)
        return write_failed(packer, path);
    return 0;
}

static int pack_file(struct packer *packer, const char *path, const char *name)
{
    const int fd = open(path, O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
    if (fd < 0)
        return fail(packer, "cannot read \"%s\": %s", path, strerror(errno));
    struct stat info;
    if (fstat(fd, &info) != 0) {
        const int error = errno;
        close(fd);
        return fail(packer, "cannot read \"%s\": %s", path, strerror(error));
    }

    struct archive_entry *entry = archive_entry_new();
    archive_entry_copy_stat(entry, &info);
    archive_entry_set_pathname(entry, name);
    int status = write_header(packer, entry, path);
    archive_entry_free(entry);
    if (status == 0)
        status = progress(packer, name, 0);

    off_t left = info.st_size;
    while (status == 0 && left > 0) {
        const size_t wanted = left < CHUNK_SIZE ? (size_t) left : CHUNK_SIZE;
        const ssize_t count = read(fd, packer->chunk, wanted);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            status = fail(packer, "cannot read \"%s\": %s", path, strerror(errno));
        else if (count == 0)
            status = fail(packer, "\"%s\" shrank while it was being packed", path);
        else if (archive_write_data(packer->zip, packer->chunk, (size_t) count) != count)
            status = write_failed(packer, path);
        else {
            left -= count;
            packer->all_bytes += count;
            status = progress(packer, name, info.st_size - left);
        }
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
        return fail(packer, "cannot read the folder \"%s\": %s", path, strerror(errno));
    for (;;) {
        errno = 0;
        const struct dirent *item = readdir(folder);
        if (!item) {
            if (errno != 0)
                status = fail(packer, "cannot read the folder \"%s\": %s", path, strerror(errno));
            break;
        }
        if (is_dot_or_dot_dot(item->d_name))
            continue;
        char *child_path = join(path, strcmp(path, "/") == 0 ? "" : "/", item->d_name);
        char *child_name = join(name, "/", item->d_name);
        status = child_path && child_name ? pack(packer, child_path, child_name)
                                          : fail(packer, "out of memory");
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
        return fail(packer, "cannot read the link \"%s\": %s", path, strerror(errno));
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
        return fail(packer, "cannot read \"%s\": %s", path, strerror(errno));
    if (info.st_dev == packer->archive_device && info.st_ino == packer->archive_node)
        return 0;
    if (S_ISREG(info.st_mode))
        return pack_file(packer, path, name);
    if (S_ISDIR(info.st_mode))
        return pack_folder(packer, path, name, &info);
    if (S_ISLNK(info.st_mode))
        return pack_link(packer, path, name, &info);
    /* Devices, pipes and sockets have no data a zip file could hold. */
    notice(packer, "left out \"%s\": not a file, folder or link", path);
    return 0;
}

int kestrin_zip_pack(int fd,
                     const char *const *paths,
                     const char *const *names,
                     size_t count,
                     const struct kestrin_zip_hooks *hooks)
{
    /* zlib's state for each member (some 300 KB) is allocated and freed
     * member by member; with the C library's default it is handed back to
     * the system each time and its pages zeroed anew for the next, which
     * for many small files costs more than compressing them. */
    mallopt(M_TRIM_THRESHOLD, 8 << 20);

    struct packer packer = {0};
    packer.hooks = hooks;
    struct stat info;
    int status = fstat(fd, &info) == 0
                     ? 0
                     : fail(&packer, "cannot read the archive: %s", strerror(errno));
    packer.archive_device = info.st_dev;
    packer.archive_node = info.st_ino;
    packer.chunk = malloc(CHUNK_SIZE);
    packer.zip = archive_write_new();
    packer.utf8 = newlocale(LC_CTYPE_MASK, "C.UTF-8", (locale_t) 0);
    packer.plain = newlocale(LC_CTYPE_MASK, "C", (locale_t) 0);
    const locale_t before = uselocale((locale_t) 0);
    if (status == 0 && (!packer.chunk || !packer.zip || !packer.plain))
        status = fail(&packer, "out of memory");
    if (status == 0
        && (archive_write_set_format_zip(packer.zip) != ARCHIVE_OK
            || archive_write_open_fd(packer.zip, fd) != ARCHIVE_OK))
        status = fail(&packer, "cannot write the archive: %s", archive_error_string(packer.zip));

    for (size_t i = 0; status == 0 && i < count; i++)
        status = pack(&packer, paths[i], names[i]);

    /* Closing writes the zip's central directory: it can fail too. */
    if (status == 0 && archive_write_close(packer.zip) != ARCHIVE_OK)
        status = fail(&packer, "cannot write the archive: %s", archive_error_string(packer.zip));
    if (packer.zip)
        archive_write_free(packer.zip);
    uselocale(before);
    if (packer.utf8)
        freelocale(packer.utf8);
    if (packer.plain)
        freelocale(packer.plain);
    free(packer.chunk);
    return status;
}
