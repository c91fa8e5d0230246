/* What every test add-on shares: a process_refs that ignores what it is
 * given and does what the add-on's own behave() does. */

#include <kestrin/addon.h>

static int behave(void);

KESTRIN_ADDON_EXPORT int process_refs(const struct kestrin_entry_ref *folder,
                                      const struct kestrin_entry_ref *entries,
                                      size_t count,
                                      void *reserved)
{
    (void) folder;
    (void) entries;
    (void) count;
    (void) reserved;
    return behave();
}
