#pragma once

#include <QByteArray>
#include <QSize>
#include <string>

namespace kestrin {

// The top-left corner of a PNG file as a PNG of its own: the first screen of
// a picture too big to decode at once. A PNG keeps its rows top down in one
// compressed stream, and a row's filter looks only left and up, so the
// corner needs only the start of the stream and the start of each row: as
// much of the stream is inflated as the corner's rows take, and the start of
// each row is stored again, uncompressed, under a header that gives the
// corner's size. Any PNG reader decodes the result exactly as it decodes
// that corner of the whole picture.
class PngCorner
{
public:
    // The corner of `size` (or less, where the picture is smaller) of the
    // picture at `path`; empty when the file is no PNG, keeps its rows out
    // of order (interlaced), is no bigger than the corner, or cannot be read
    // that far.
    static QByteArray Read(const std::string &path, QSize size);
};

} // namespace kestrin
