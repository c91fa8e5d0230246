/* Fails with 3, after saying something on both of its outputs. */

#include "test_addon.h"

#include <stdio.h>

static int behave(void)
{
    printf("said on standard output\n");
    fprintf(stderr, "first words\n");
    fprintf(stderr, "the last words\n\n");
    return 3;
}
