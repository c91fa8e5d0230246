/* Dies of a segmentation fault in process_refs. */

#include <kestrin/addon.h>

#include <stdint.h>

/* Not null, and not known to the compiler: a sanitizer build lets the write
 * through to the real fault instead of reporting a null dereference. */
static volatile uintptr_t nowhere = 16;

KESTRIN_ADDON_EXPORT int process_refs(const struct kestrin_entry_ref *folder,
                                      const struct kestrin_entry_ref *entries,
                                      size_t count,
                                      void *reserved)
{
    (void) folder;
    (void) entries;
    (void) count;
    (void) reserved;
    *(volatile char *) nowhere = 1;
    return 0;
}
