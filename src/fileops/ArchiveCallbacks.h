#pragma once

namespace kestrin {

class CopyControl;

// Progress callbacks for a zip packing and an unpacking routine: `overall` and
// `fileProgress` are the positions of the overall and the file bar, `name` the
// archive member in work; the file bar shows the member's last path component
// and the "To" line the whole name. An overall position of -1 or no control
// reports nothing. Both answer 1 (go on), or 0 once the user asked to stop;
// while the user has paused the work they wait.
//
// Called on the worker that packs or unpacks; `control` is its progress window.
int ZipCallback(int overall, int fileProgress, const char *name, CopyControl *control);
int UnZipCallback(int overall, int fileProgress, const char *name, CopyControl *control);

} // namespace kestrin
