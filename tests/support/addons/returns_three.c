/* Fails with 3, after saying something on both of its outputs. */

#include <kestrin/addon.h>

#include <stdio.h>

KESTRIN_ADDON_EXPORT int process_refs(const struct kestrin_entry_ref *folder,
                                      const struct kestrin_entry_ref *entries,
                                      size_t count,
                                      void *reserved)
{
    (void) folder;
    (void) entries;
    (void) count;
    (void) reserved;
    printf("said on standard output\n");
    fprintf(stderr, "first words\n");
    fprintf(stderr, "the last words\n\n");
    return 3;
}
