#include "viewer/PngCorner.h"

#include "platform/File.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <vector>
#include <zlib.h>

namespace kestrin {

namespace {

constexpr std::array<unsigned char, 8> kSignature = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};
// Pieces of the file read, and of the stored rows written, at a time.
constexpr size_t kPiece = 1 << 20;
// A corner, or a row of the whole, that would take more than this is not
// worth a first look.
constexpr uint64_t kMostBytes = uint64_t(1) << 28;

uint32_t BigEndian(const unsigned char *bytes)
{
    return uint32_t(bytes[0]) << 24 | uint32_t(bytes[1]) << 16 | uint32_t(bytes[2]) << 8
           | uint32_t(bytes[3]);
}

void PutBigEndian(unsigned char *bytes, uint32_t value)
{
    bytes[0] = uint8_t(value >> 24);
    bytes[1] = uint8_t(value >> 16);
    bytes[2] = uint8_t(value >> 8);
    bytes[3] = uint8_t(value);
}

void AppendChunk(QByteArray &out, const char *type, const unsigned char *data, size_t size)
{
    unsigned char number[4];
    PutBigEndian(number, uint32_t(size));
    out.append(reinterpret_cast<const char *>(number), 4);
    out.append(type, 4);
    out.append(reinterpret_cast<const char *>(data), qsizetype(size));
    uLong crc = crc32(0, reinterpret_cast<const Bytef *>(type), 4);
    if (size > 0) // given no bytes, crc32 starts again
        crc = crc32(crc, data, uInt(size));
    PutBigEndian(number, uint32_t(crc));
    out.append(reinterpret_cast<const char *>(number), 4);
}

bool ReadAll(platform::File &file, void *buffer, size_t size)
{
    auto *bytes = static_cast<unsigned char *>(buffer);
    while (size > 0) {
        const ssize_t got = file.Read(bytes, size);
        if (got <= 0)
            return false;
        bytes += got;
        size -= size_t(got);
    }
    return true;
}

// The bits of one pixel; 0 for a header that is no PNG's or an interlaced
// one.
int PixelBits(const unsigned char *header)
{
    const int depth = header[8];
    const int colour = header[9];
    const int interlace = header[12];
    const std::array<int, 7> channels = {1, 0, 3, 1, 2, 0, 4}; // by colour type
    if (colour >= int(channels.size()) || channels[size_t(colour)] == 0 || interlace != 0
        || (depth != 1 && depth != 2 && depth != 4 && depth != 8 && depth != 16))
        return 0;
    return depth * channels[size_t(colour)];
}

// The bytes of a row of `width` pixels as the stream holds them: the filter
// byte, then the packed pixels.
uint64_t RowBytes(uint64_t width, int pixelBits)
{
    return 1 + (width * uint64_t(pixelBits) + 7) / 8;
}

// Inflates the IDAT chunks' stream a row at a time and keeps the start of
// each row, until it has the rows it was asked for.
class RowInflater
{
public:
    RowInflater(uint64_t rowBytes, uint64_t keptBytes, uint32_t rows)
        : fRow(rowBytes)
        , fKeptBytes(keptBytes)
        , fRowsLeft(rows)
    {
        fKept.reserve(size_t(keptBytes * rows));
        fOk = inflateInit(&fStream) == Z_OK;
        StartRow();
    }
    ~RowInflater()
    {
        if (fOk)
            inflateEnd(&fStream);
    }
    RowInflater(const RowInflater &) = delete;
    RowInflater &operator=(const RowInflater &) = delete;

    // Feeds a chunk of `length` bytes from the file, up to its CRC: false
    // when the file or the stream fails. Reads no more once it is done.
    bool Feed(platform::File &file, uint32_t length)
    {
        std::vector<unsigned char> piece;
        while (fOk && length > 0 && !Done()) {
            piece.resize(std::min<size_t>(length, kPiece));
            if (!ReadAll(file, piece.data(), piece.size()))
                return false;
            length -= uint32_t(piece.size());
            fStream.next_in = piece.data();
            fStream.avail_in = uInt(piece.size());
            while (fStream.avail_in > 0 && !Done()) {
                const int status = inflate(&fStream, Z_NO_FLUSH);
                if (fStream.avail_out == 0)
                    KeepRow();
                if (status == Z_STREAM_END && !Done())
                    return false;
                if (status != Z_OK && status != Z_STREAM_END)
                    return false;
            }
        }
        return fOk && (Done() || file.Seek(4, SEEK_CUR) >= 0); // past the CRC
    }
    bool Done() const { return fRowsLeft == 0; }
    const std::vector<unsigned char> &Kept() const { return fKept; }

private:
    void StartRow()
    {
        fStream.next_out = fRow.data();
        fStream.avail_out = uInt(fRow.size());
    }
    void KeepRow()
    {
        fKept.insert(fKept.end(), fRow.begin(), fRow.begin() + ptrdiff_t(fKeptBytes));
        fRowsLeft--;
        StartRow();
    }

    std::vector<unsigned char> fRow;
    uint64_t fKeptBytes;
    uint32_t fRowsLeft;
    std::vector<unsigned char> fKept;
    z_stream fStream{};
    bool fOk = false;
};

// The rows again, as a stream of stored (uncompressed) blocks in IDAT
// chunks: no work for the reader beyond copying them.
bool AppendStoredRows(QByteArray &out, const std::vector<unsigned char> &rows)
{
    z_stream stream{};
    if (deflateInit(&stream, Z_NO_COMPRESSION) != Z_OK)
        return false;
    std::vector<unsigned char> piece(kPiece);
    stream.next_in = const_cast<Bytef *>(rows.data());
    stream.avail_in = uInt(rows.size());
    int status = Z_OK;
    while (status == Z_OK) {
        stream.next_out = piece.data();
        stream.avail_out = uInt(piece.size());
        status = deflate(&stream, Z_FINISH);
        const size_t made = piece.size() - stream.avail_out;
        if (made > 0)
            AppendChunk(out, "IDAT", piece.data(), made);
    }
    deflateEnd(&stream);
    return status == Z_STREAM_END;
}

// The header of the corner, and the inflater that keeps its rows; null
// when there is no corner to take.
std::unique_ptr<RowInflater> TakeHeader(unsigned char *header, QSize size)
{
    const uint32_t width = BigEndian(header);
    const uint32_t height = BigEndian(header + 4);
    const int bits = PixelBits(header);
    const uint32_t cornerWidth = std::min(width, uint32_t(size.width()));
    const uint32_t cornerHeight = std::min(height, uint32_t(size.height()));
    if (bits == 0 || width == 0 || (cornerWidth == width && cornerHeight == height)
        || RowBytes(width, bits) > kMostBytes
        || RowBytes(cornerWidth, bits) * cornerHeight > kMostBytes)
        return nullptr;
    PutBigEndian(header, cornerWidth);
    PutBigEndian(header + 4, cornerHeight);
    return std::make_unique<RowInflater>(RowBytes(width, bits),
                                         RowBytes(cornerWidth, bits),
                                         cornerHeight);
}

} // namespace

QByteArray PngCorner::Read(const std::string &path, QSize size)
{
    platform::File file(path, B_READ_ONLY);
    std::array<unsigned char, 8> signature{};
    if (size.isEmpty() || file.InitCheck() != B_OK || !ReadAll(file, signature.data(), 8)
        || signature != kSignature)
        return {};
    QByteArray out(reinterpret_cast<const char *>(kSignature.data()), 8);
    std::unique_ptr<RowInflater> rows;
    unsigned char head[8];
    while (ReadAll(file, head, 8)) {
        const uint32_t length = BigEndian(head);
        const char *type = reinterpret_cast<const char *>(head + 4);
        if (length > 0x7fffffffu)
            return {};
        if (std::memcmp(type, "IHDR", 4) == 0) {
            unsigned char header[13 + 4];
            if (rows != nullptr || length != 13 || !ReadAll(file, header, sizeof header))
                return {};
            rows = TakeHeader(header, size);
            if (rows == nullptr)
                return {};
            AppendChunk(out, "IHDR", header, 13);
        } else if (std::memcmp(type, "IDAT", 4) == 0) {
            if (rows == nullptr || !rows->Feed(file, length))
                return {};
            if (rows->Done()) {
                out.reserve(out.size() + qsizetype(rows->Kept().size() * 101 / 100) + 4096);
                if (!AppendStoredRows(out, rows->Kept()))
                    return {};
                AppendChunk(out, "IEND", nullptr, 0);
                return out;
            }
        } else if (std::memcmp(type, "IEND", 4) == 0 || rows == nullptr) {
            return {};
        } else {
            // What comes between the header and the rows (the palette, its
            // transparency, gamma and colour profile) is kept as it is.
            std::vector<unsigned char> chunk(size_t(length) + 4);
            if (!ReadAll(file, chunk.data(), chunk.size()))
                return {};
            out.append(reinterpret_cast<const char *>(head), 8);
            out.append(reinterpret_cast<const char *>(chunk.data()), qsizetype(chunk.size()));
        }
    }
    return {};
}

} // namespace kestrin
