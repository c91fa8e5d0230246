#pragma once

// The size lister behind kestrin-fsize: one line per entry on standard output,
// a folder's contents before the folder itself.

namespace kestrin {

// Prints "% 8ld %s\n" with the entry's own size (a folder's line shows the
// folder node's size, not a sum) after listing a folder's contents; a path
// that cannot be read gives "fsize: can't access <path>" on standard error.
void fsize(const char *path);

// Calls `apply` with the absolute path of every entry of the folder `dir`
// (links are not followed); a missing folder gives "dirwalk: can't open <dir>"
// on standard error.
void dirwalk(const char *dir, void (*apply)(const char *));

} // namespace kestrin
