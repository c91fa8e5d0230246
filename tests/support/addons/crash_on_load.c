/* Dies of SIGSEGV while it is being loaded, before process_refs is found. */

#include <kestrin/addon.h>

#include <signal.h>

__attribute__((constructor)) static void crash_while_loading(void)
{
    raise(SIGSEGV);
}

KESTRIN_ADDON_EXPORT int process_refs(const struct kestrin_entry_ref *folder,
                                      const struct kestrin_entry_ref *entries,
                                      size_t count,
                                      void *reserved)
{
    (void) folder;
    (void) entries;
    (void) count;
    (void) reserved;
    return 0;
}
