#pragma once

/*
 * Packs files, folders (with everything in them) and links (as links) into a
 * zip archive, with libarchive. Shared by the MakeArchive add-on and the copy
 * engine, so it is C and needs nothing but libarchive and the C library.
 */

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

enum {
    KESTRIN_ZIP_DONE = 0,
    KESTRIN_ZIP_FAILED = -1,
    KESTRIN_ZIP_STOPPED = 1,
};

struct kestrin_zip_hooks
{
    /* After each member's header and each chunk of its data: the member's
     * name in the archive, its bytes packed so far and the bytes of all
     * members so far. Nonzero goes on; 0 stops the packing. May be NULL. */
    int (*progress)(void *data, const char *member, long long member_bytes, long long all_bytes);
    /* One line for the user: after a failure (`fatal`) packing ends; else an
     * entry was left out (a device, a pipe) and packing goes on. May be NULL. */
    void (*report)(void *data, int fatal, const char *text);
    void *data;
};

/* Writes the zip to `fd` (open for writing, empty): entry `paths[i]` under the
 * name `names[i]`, folders recursively as `names[i]/...`. The archive's own
 * file is left out when a folder holds it. KESTRIN_ZIP_DONE, FAILED (after a
 * report) or STOPPED; the caller closes `fd` and, unless DONE, throws the
 * file away. */
int kestrin_zip_pack(int fd,
                     const char *const *paths,
                     const char *const *names,
                     size_t count,
                     const struct kestrin_zip_hooks *hooks);

#ifdef __cplusplus
}
#endif
