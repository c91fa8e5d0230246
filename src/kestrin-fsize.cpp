// kestrin-fsize PATH...: the sizes of the paths and of everything below them.

#include "fileops/OccupiedSpace.h"

#include <cstdio>

int main(int argc, char **argv)
{
    if (argc < 2) {
        fprintf(stderr, "usage: kestrin-fsize PATH...\n");
        return 2;
    }
    for (int i = 1; i < argc; i++)
        kestrin::fsize(argv[i]);
    return 0;
}
