/* Dies of SIGSEGV while it is being loaded, before process_refs is found. */

#include "test_addon.h"

#include <signal.h>

__attribute__((constructor)) static void crash_while_loading(void)
{
    raise(SIGSEGV);
}

static int behave(void)
{
    return 0;
}
