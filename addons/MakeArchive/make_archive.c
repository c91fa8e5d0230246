/*
 * MakeArchive: packs the selected entries into a zip archive in the folder
 * they were selected in, named after the first of them ("<first>.zip", or
 * "<first> 2.zip" and so on when that name is taken; nothing is ever
 * overwritten). Folders are packed with everything in them, links as links,
 * files byte for byte. On failure no archive is left behind.
 */

#include <kestrin/addon.h>

#include "platform/ZipPack.h"

#include <errno.h>
#include <fcntl.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

/* "<first> 2.zip" up to this number; beyond it something is wrong. */
#define MAX_NUMBER 10000

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

static void report(void *data, int fatal, const char *text)
{
    (void) data;
    (void) fatal;
    fprintf(stderr, "MakeArchive: %s\n", text);
}

static int is_dot_or_dot_dot(const char *name)
{
    return strcmp(name, ".") == 0 || strcmp(name, "..") == 0;
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

    const char **paths = malloc(count * sizeof *paths);
    const char **names = malloc(count * sizeof *names);
    int status = paths && names ? 0 : fail("out of memory");
    for (size_t i = 0; status == 0 && i < count; i++) {
        paths[i] = entries[i].path;
        names[i] = entries[i].name;
    }
    const struct kestrin_zip_hooks hooks = {NULL, report, NULL};
    if (status == 0)
        status = kestrin_zip_pack(fd, paths, names, count, &hooks);
    free(paths);
    free(names);
    if (close(fd) != 0 && status == 0)
        status = fail("cannot write \"%s\": %s", archive_path, strerror(errno));
    if (status != 0)
        unlink(archive_path);

    free(archive_path);
    return status == 0 ? 0 : 1;
}
