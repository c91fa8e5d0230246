/* Dies of a segmentation fault in process_refs. */

#include "test_addon.h"

#include <stdint.h>

/* Not null, and not known to the compiler: a sanitizer build lets the write
 * through to the real fault instead of reporting a null dereference. */
static volatile uintptr_t nowhere = 16;

static int behave(void)
{
    *(volatile char *) nowhere = 1;
    return 0;
}
