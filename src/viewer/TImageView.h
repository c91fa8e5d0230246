#pragma once

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
class TImageView : public QAbstractScrollArea
{
    Q_OBJECT

public:
    static constexpr int64_t kDecodedPixels = 40'000'000;

    // `origin`: the view's top-left corner in its window, which the fit to
    // the screen leaves room for.
    TImageView(const std::string &path, QPoint origin, QWidget *parent = nullptr);

    void SetImageScale(float scale, int32_t mode);
    // The image's size at the current scale.
    void GetMaxSize(float *width, float *height) const;
    void FixupScrollbars();

    float Scale() const { return fScale; }
    int32_t ScaleMode() const { return fMode; }
    bool Decoded() const { return fDecoded; }
    // The picture's own size (empty when there is none).
    QSize ImageSize() const { return fSize; }

signals:
    void ImageDecoded(bool ok);

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;

private:
    void Decode(const std::string &path);
    void Take(const QImage &image, QSize size);
    void Draw(QPainter &painter);

    QImage fBitmap;
    QSize fSize;
    float fScale = 1.0f;
    int32_t fMode = 0;
    bool fFitWhenDecoded = false;
    bool fDecoded = false;
    QPoint fOrigin;
};

} // namespace kestrin
