#include "viewer/PngCorner.h"

#include "support/TempHome.h"

#include <QBuffer>
#include <QImageReader>
#include <QImageWriter>
#include <QRandomGenerator>
#include <gtest/gtest.h>

using kestrin::PngCorner;

namespace {

// A picture of noise, so that its rows take many IDAT chunks and every
// filter has work to do.
QImage Noise(QSize size, QImage::Format format)
{
    QImage image(size, QImage::Format_ARGB32);
    QRandomGenerator random(7);
    for (int y = 0; y < size.height(); y++) {
        auto *row = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < size.width(); x++)
            row[x] = random.generate();
    }
    return image.convertToFormat(format);
}

QImage Decoded(QByteArray png)
{
    QBuffer buffer(&png);
    buffer.open(QIODevice::ReadOnly);
    return QImageReader(&buffer, "png").read();
}

std::string Text(QSize size)
{
    return std::to_string(size.width()) + "x" + std::to_string(size.height());
}

class PngCornerTest : public ::testing::Test
{
protected:
    std::string Write(const std::string &name, const QImage &image, const char *format = "png")
    {
        const std::string path = fHome.Root() + "/" + name;
        EXPECT_TRUE(QImageWriter(QString::fromStdString(path), format).write(image));
        return path;
    }

    TempHome fHome;
};

// Whatever the pixels' kind, and however much of the rows is kept, the
// corner is that corner of the whole picture.
TEST_F(PngCornerTest, TheCornerDecodesAsThatCornerOfTheWholePicture)
{
    const QImage::Format formats[] = {QImage::Format_RGB32,
                                      QImage::Format_ARGB32,
                                      QImage::Format_Grayscale8,
                                      QImage::Format_Indexed8,
                                      QImage::Format_Mono,
                                      QImage::Format_RGBA64};
    const QSize corners[] = {{123, 150}, {301, 150}, {500, 150}, {123, 400}};
    for (const QImage::Format format : formats) {
        const std::string path = Write("picture.png", Noise(QSize(301, 400), format));
        const QImage whole(QString::fromStdString(path));
        ASSERT_FALSE(whole.isNull());
        for (const QSize corner : corners) {
            const QSize expected = corner.boundedTo(whole.size());
            const QImage top = Decoded(PngCorner::Read(path, corner));
            ASSERT_EQ(Text(top.size()), Text(expected)) << format << " " << Text(corner);
            EXPECT_EQ(top.format(), whole.format()) << format;
            EXPECT_TRUE(top == whole.copy(QRect(QPoint(0, 0), expected)))
                << format << " " << Text(corner);
        }
    }
}

TEST_F(PngCornerTest, NothingWhereTheCornerCannotBeHadAlone)
{
    const std::string png = Write("picture.png", Noise(QSize(200, 300), QImage::Format_RGB32));
    const std::string bytes = ReadFileBytes(png).value();
    std::string interlaced = bytes;
    interlaced[8 + 8 + 12] = 1; // the header's interlace method
    WriteFileBytes(fHome.Root() + "/interlaced.png", interlaced);
    // Cut where fewer rows than the corner's are there.
    WriteFileBytes(fHome.Root() + "/cut.png", bytes.substr(0, bytes.size() / 4));
    const std::pair<std::string, QSize> cases[] = {
        {"interlaced.png", {100, 10}},
        {"cut.png", {100, 150}},
        {"picture.png", {200, 300}},
        {"picture.png", {400, 400}},
        {"picture.png", {0, 10}},
        {Write("photo.jpg", Noise(QSize(200, 300), QImage::Format_RGB32), "jpeg"), {100, 10}},
        {"missing.png", {100, 10}},
    };
    for (const auto &[name, corner] : cases) {
        const std::string path = name.front() == '/' ? name : fHome.Root() + "/" + name;
        EXPECT_TRUE(PngCorner::Read(path, corner).isEmpty()) << name << " " << Text(corner);
    }
}

} // namespace
