#pragma once

namespace kestrin {

class CopyWin;

// Progress callbacks for a zip packing and an unpacking routine: `overall` and
// `fileProgress` are the positions of the overall and the file bar, `name` the
// archive member in work. Both redraw the window first, so each call shows
// what the previous one set. An overall position of -1 or no window only
// redraws. Both answer 1: go on.
//
// Called on the GUI thread, which owns the window.
int ZipCallback(int overall, int fileProgress, const char *name, CopyWin *window);
int UnZipCallback(int overall, int fileProgress, const char *name, CopyWin *window);

} // namespace kestrin
