/*
 * kestrin/addon.h: the interface a Kestrin add-on implements.
 *
 * An add-on is a shared object (built with -shared -fPIC) that exports one C
 * function, process_refs. Kestrin lists every file in the "Tracker" folder of
 * its add-on folders in the Add-Ons menu, labelled with the file's name:
 *
 *     <install prefix>/lib/kestrin/add-ons/Tracker/     shipped with Kestrin
 *     $XDG_DATA_HOME/kestrin/add-ons/Tracker/           the user's own
 *         ($XDG_DATA_HOME defaults to ~/.local/share)
 *
 * Name the file after what the menu should say ("MakeArchive", not
 * "libmakearchive.so"). An add-on named exactly "MakeArchive" gets the
 * shortcut Ctrl+A.
 *
 * How an add-on is run
 * --------------------
 * When the user picks an add-on, Kestrin starts a helper program,
 * kestrin-addon-host, which loads the add-on with dlopen(RTLD_NOW), looks up
 * process_refs and calls it once with the folder of the focused pane and the
 * entries selected in it. Each run is a fresh process that ends when
 * process_refs returns, so:
 *
 *   - a crash, a hang or a call to exit() harms nothing but that run, and
 *     Kestrin stays responsive while the add-on works;
 *   - nothing survives from one run to the next (no global state, no
 *     threads); memory need not be freed before returning, although it does
 *     no harm;
 *   - the working directory is the folder, when it can be entered; standard
 *     input is empty (/dev/null); the environment is Kestrin's.
 *
 * What the add-on writes to standard output or standard error is collected.
 * When process_refs fails, Kestrin shows the last line written there to the
 * user with the failure, so a failing add-on should end with one line that
 * says what went wrong, e.g. "cannot write \"x.zip\": No space left on device".
 *
 * An add-on has no window of its own to draw in. One that needs to ask the
 * user something must start a program that does.
 *
 * Kestrin watches its folders, so files the add-on creates, changes or
 * removes show up in the panes by themselves.
 *
 * Compatibility
 * -------------
 * KESTRIN_ADDON_API_VERSION names the contract described here. A later
 * version keeps process_refs and the layout of struct kestrin_entry_ref as
 * they are; anything new is handed over through `reserved`, which version 1
 * passes as NULL. Add-ons must accept and ignore a non-NULL `reserved` they
 * do not understand.
 *
 * Example
 * -------
 *     #include <kestrin/addon.h>
 *     #include <stdio.h>
 *
 *     KESTRIN_ADDON_EXPORT int process_refs(const struct kestrin_entry_ref *folder,
 *                                           const struct kestrin_entry_ref *entries,
 *                                           size_t count,
 *                                           void *reserved)
 *     {
 *         (void)reserved;
 *         for (size_t i = 0; i < count; i++)
 *             printf("%s is selected in %s\n", entries[i].name, folder->path);
 *         return 0;
 *     }
 *
 *     cc -shared -fPIC -I<kestrin>/include -o Hello hello.c
 */

#ifndef KESTRIN_ADDON_H
#define KESTRIN_ADDON_H

#include <stddef.h>
#include <sys/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The version of the contract in this header. */
#define KESTRIN_ADDON_API_VERSION 1

/* Keeps process_refs visible when the add-on is built with
 * -fvisibility=hidden. */
#if defined(__GNUC__)
#define KESTRIN_ADDON_EXPORT __attribute__((visibility("default")))
#else
#define KESTRIN_ADDON_EXPORT
#endif

/*
 * One entry of the file system: a file, a folder, a link or anything else a
 * folder can hold.
 *
 * `device` and `directory` identify the folder that holds the entry (its
 * st_dev and st_ino as stat(2) reports them), `name` is the entry's name in
 * that folder and `path` its absolute path. A link is named, not followed:
 * `path` leads to the link itself (use lstat(2) to tell).
 *
 * Names and paths are the bytes the file system holds, NUL-terminated. They
 * are usually UTF-8 but need not be, and may hold any byte but NUL (a name
 * never holds "/"), newlines included. Treat them as opaque bytes: pass them
 * to open(2) and friends unchanged.
 *
 * Everything a kestrin_entry_ref points to belongs to Kestrin and stays valid
 * until process_refs returns.
 */
struct kestrin_entry_ref
{
    dev_t device;
    ino_t directory;
    const char *name;
    const char *path;
};

/*
 * The entry point, looked up by this name. Called once per run:
 *
 *   folder    the folder the focused pane shows.
 *   entries   the entries selected in it, in the order the pane lists them.
 *   count     how many there are. Kestrin itself runs an add-on only with a
 *             selection, but an add-on should still answer count == 0 with
 *             a failure, not a crash.
 *   reserved  NULL in version 1; see "Compatibility" above.
 *
 * Returns 0 when the work is done. Any other value tells Kestrin that it
 * failed; Kestrin shows the value and the add-on's last line of output.
 */
KESTRIN_ADDON_EXPORT int process_refs(const struct kestrin_entry_ref *folder,
                                      const struct kestrin_entry_ref *entries,
                                      size_t count,
                                      void *reserved);

/* The type of process_refs, for whoever looks it up with dlsym(3). */
typedef int (*kestrin_process_refs_func)(const struct kestrin_entry_ref *folder,
                                         const struct kestrin_entry_ref *entries,
                                         size_t count,
                                         void *reserved);

#ifdef __cplusplus
}
#endif

#endif /* KESTRIN_ADDON_H */
