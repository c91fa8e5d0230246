/* Writes what process_refs was given to the file named by
 * KESTRIN_TEST_ADDON_RECORD: the count, "null" or "reserved", the working
 * directory, then device, directory, name and path of the folder and of each
 * entry, every field ended by a NUL byte. Returns KESTRIN_TEST_ADDON_RESULT
 * (0 when unset), or with KESTRIN_TEST_ADDON_EXIT set calls exit() with it. */

#include <kestrin/addon.h>

#include <limits.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

static void field(FILE *out, const char *text)
{
    fputs(text, out);
    fputc('\0', out);
}

static void number(FILE *out, unsigned long long value)
{
    fprintf(out, "%llu", value);
    fputc('\0', out);
}

static void ref(FILE *out, const struct kestrin_entry_ref *ref)
{
    number(out, (unsigned long long) ref->device);
    number(out, (unsigned long long) ref->directory);
    field(out, ref->name);
    field(out, ref->path);
}

KESTRIN_ADDON_EXPORT int process_refs(const struct kestrin_entry_ref *folder,
                                      const struct kestrin_entry_ref *entries,
                                      size_t count,
                                      void *reserved)
{
    const char *record = getenv("KESTRIN_TEST_ADDON_RECORD");
    if (record) {
        FILE *out = fopen(record, "wb");
        if (!out)
            return 99;
        char cwd[PATH_MAX];
        number(out, count);
        field(out, reserved ? "reserved" : "null");
        field(out, getcwd(cwd, sizeof cwd) ? cwd : "?");
        ref(out, folder);
        for (size_t i = 0; i < count; i++)
            ref(out, &entries[i]);
        fclose(out);
    }
    const char *status = getenv("KESTRIN_TEST_ADDON_EXIT");
    if (status)
        exit(atoi(status));
    const char *result = getenv("KESTRIN_TEST_ADDON_RESULT");
    return result ? atoi(result) : 0;
}
