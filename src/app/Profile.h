#pragma once

// The settings profile: plain `key=value` lines in <settings>/<folder>/<file>.
// Kestrin's keys have always been rewritten in place, byte for byte, and the
// format's quirks are part of what users' files look like, so they are kept:
// the first matching line wins; a new value is written over the old line
// without shifting the file, leaving the tail of a longer old line behind as
// a line of its own, or running over the start of the next line when longer;
// and a last line without a line feed loses its last character when read.

#include <string>
#include <string_view>
#include <sys/types.h>

namespace platform {
class File;
}

namespace kestrin {

// <settings>/<folder>/<file>; empty when there is no settings folder (after
// the alert of GetPathOnly).
std::string GetSettingFullPath(std::string_view folder, std::string_view file);

// The settings folder. When the environment names none, shows "Couldn't find
// the preferences directory." and leaves `out` as it was.
bool GetPathOnly(std::string *out);

// Makes <settings>/<folder>, keeping one that is there. False when it cannot.
bool CreatePrefFolder(std::string_view folder);

// Makes <settings>/<folder> and an empty `file` in it, keeping one that is
// there. False when either cannot be made.
bool CreatePrefFile(std::string_view folder, std::string_view file);

// True, with `value` filled, when the file holds a line for `key`; otherwise
// false and `value` untouched. Never creates the file.
bool GetProfileString(std::string_view folder,
                      std::string_view key,
                      std::string *value,
                      std::string_view file);

// A yes-or-no setting. Written as "1" or "0"; read as true when its number
// (as kestrin::atoi reads it, so "2" or "1\r" count) is not zero, and as
// `fallback` when the file has no line for `key`.
bool GetProfileFlag(std::string_view folder,
                    std::string_view key,
                    bool fallback,
                    std::string_view file);

// Stores `key=value`, creating folder and file when missing. False only when
// the file is missing and cannot be made.
bool SetProfileString(std::string_view folder,
                      std::string_view key,
                      std::string_view value,
                      std::string_view file);

// The pieces the two above are built from, open for tests.

// Reads up to and including the next line feed from the file's position and
// returns the count of bytes read. `out` gets the line with its last byte cut:
// the line feed, or the last character of a final line that has none.
ssize_t ReadLine(platform::File &file, std::string *out);

// Whether `line` is a line for `key`: it begins with the key followed at once
// by "=" (a line shorter than the key matches only when the key has "=" just
// past the line's end).
bool Compare(std::string_view key, std::string_view line);

// Scans from the start; on a match leaves the file at the start of that line.
bool FindValue(platform::File &file, std::string_view key, std::string *value);

} // namespace kestrin
