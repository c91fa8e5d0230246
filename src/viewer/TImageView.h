#pragma once

#include "platform/Background.h"

#include <QAbstractScrollArea>
#include <QImage>
#include <cstdint>
#include <string>

namespace kestrin {

// Shows an image file at a scale: by a factor (mode 0), stretched to the
// view (mode 1), or by the factor that fits the screen (mode 2, which turns
// into mode 0 with that factor at once). The file is decoded on a worker;
// until then, and for a file that is no image, the view is empty. A picture
// of more pixels than kDecodedPixels is decoded smaller, and drawn as if it
// had all of its own.
//
// A picture of more than kFirstLookPixels shows at once from a first look,
// and whole once it is decoded: the first look of a PNG is its top-left
// corner as big as the screen (the first screen at full scale, decoded from
// the start of the file only); of a picture whose format decodes smaller
// quickly (a JPEG), the whole of it at the screen's size.
class TImageView : public QAbstractScrollArea
{
    Q_OBJECT

public:
    static constexpr int64_t kDecodedPixels = 40'000'000;
    static constexpr int64_t kFirstLookPixels = 8'000'000;

    // `origin`: the view's top-left corner in its window, which the fit to
    // the screen leaves room for.
    TImageView(const std::string &path, QPoint origin, QWidget *parent = nullptr);
    // Tells the decoding worker to leave what it has not begun.
    ~TImageView() override;

    void SetImageScale(float scale, int32_t mode);
    // The image's size at the current scale.
    void GetMaxSize(float *width, float *height) const;
    void FixupScrollbars();

    float Scale() const { return fScale; }
    int32_t ScaleMode() const { return fMode; }
    // Something can be shown: the first look or the whole picture, or the
    // news that the file is no picture.
    bool Decoded() const { return fDecoded; }
    // The whole picture is decoded (or failed to).
    bool Complete() const { return fComplete; }
    // The picture's own size (empty when there is none).
    QSize ImageSize() const { return fSize; }
    // The part of the picture that the decoded pixels cover, in the
    // picture's own pixels.
    QRect DecodedArea() const { return fArea; }

signals:
    // The first that can be shown has been decoded: the picture's size is
    // known from here on (empty when the file is no picture).
    void ImageDecoded(bool ok);

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;

private:
    void Decode(const std::string &path);
    void Take(const QImage &image, QSize size, QRect area, bool complete);
    void Draw(QPainter &painter);

    QImage fBitmap;
    QSize fSize;
    QRect fArea;
    float fScale = 1.0f;
    int32_t fMode = 0;
    bool fFitWhenDecoded = false;
    bool fDecoded = false;
    bool fComplete = false;
    QPoint fOrigin;
    platform::Background::Task fDecode;
};

} // namespace kestrin
