#include "viewer/TImageView.h"

#include "platform/Background.h"

#include <QGuiApplication>
#include <QImageReader>
#include <QPainter>
#include <QScreen>
#include <QScrollBar>
#include <cmath>
#include <cstdio>

namespace kestrin {

TImageView::TImageView(const std::string &path, QPoint origin, QWidget *parent)
    : QAbstractScrollArea(parent)
    , fOrigin(origin)
{
    setObjectName("imageView");
    setFrameShape(QFrame::NoFrame);
    Decode(path);
}

void TImageView::Decode(const std::string &path)
{
    const QString file = QString::fromUtf8(path.c_str());
    platform::Background::Run(
        this,
        [file](const std::atomic<bool> &) {
            QImageReader reader(file);
            reader.setAutoTransform(true);
            const QSize size = reader.size();
            if (size.isValid() && int64_t(size.width()) * size.height() > kDecodedPixels) {
                const double shrink = std::sqrt(double(kDecodedPixels) / size.width()
                                                / size.height());
                reader.setScaledSize(QSize(std::max(1, int(size.width() * shrink)),
                                           std::max(1, int(size.height() * shrink))));
            }
            // Pictures that shrink only after decoding need room for all of
            // their pixels first.
            QImageReader::setAllocationLimit(0);
            QImage image = reader.read();
            return std::pair{std::move(image), size};
        },
        [this](std::pair<QImage, QSize> decoded) {
            const auto &[image, size] = decoded;
            Take(image, size.isValid() ? size : image.size());
        });
}

void TImageView::Take(const QImage &image, QSize size)
{
    fDecoded = true;
    fBitmap = image;
    if (image.isNull()) {
        std::printf("Image load failed.\n");
        std::fflush(stdout);
        fSize = QSize();
    } else {
        fSize = size;
    }
    if (fFitWhenDecoded)
        SetImageScale(-1, 2);
    FixupScrollbars();
    viewport()->update();
    emit ImageDecoded(!image.isNull());
}

void TImageView::SetImageScale(float scale, int32_t mode)
{
    if (scale > 0)
        fScale = scale;
    if (mode < 3)
        fMode = mode;
    if (fMode == 2) {
        fMode = 0;
        fScale = 1.0f;
        fFitWhenDecoded = !fDecoded;
        const QScreen *screen = QGuiApplication::primaryScreen();
        if (!fSize.isEmpty() && screen != nullptr) {
            // A frame's width is its right less its left, as the margins
            // (scroll bar, window border) were measured.
            const QRect frame = screen->geometry();
            const float across = float(frame.width() - 1 - 14 - fOrigin.x() - 12)
                                 / std::max(1.0f, std::floor(float(fSize.width()) - 0.5f));
            const float down = float(frame.height() - 1 - 14 - fOrigin.y() - 32)
                               / std::max(1.0f, std::floor(float(fSize.height()) - 0.5f));
            fScale = std::min(across, down);
        }
    }
    // Stretched pictures depend on the whole view's size.
    viewport()->setAttribute(Qt::WA_StaticContents, fMode == 0);
    FixupScrollbars();
    viewport()->update();
}

void TImageView::GetMaxSize(float *width, float *height) const
{
    *width = float(fSize.width()) * fScale;
    *height = float(fSize.height()) * fScale;
}

void TImageView::FixupScrollbars()
{
    float width = 0, height = 0;
    if (fMode == 0)
        GetMaxSize(&width, &height);
    const QSize view = viewport()->size();
    horizontalScrollBar()->setRange(0, std::max(0, int(std::ceil(width)) - view.width()));
    horizontalScrollBar()->setPageStep(view.width());
    verticalScrollBar()->setRange(0, std::max(0, int(std::ceil(height)) - view.height()));
    verticalScrollBar()->setPageStep(view.height());
}

void TImageView::resizeEvent(QResizeEvent *event)
{
    QAbstractScrollArea::resizeEvent(event);
    FixupScrollbars();
}

void TImageView::scrollContentsBy(int, int)
{
    viewport()->update();
}

void TImageView::paintEvent(QPaintEvent *)
{
    QPainter painter(viewport());
    Draw(painter);
}

void TImageView::Draw(QPainter &painter)
{
    if (!fDecoded)
        return;
    if (fBitmap.isNull()) {
        std::printf("Image is null\n");
        std::fflush(stdout);
        return;
    }
    if (fMode == 0) {
        float width = 0, height = 0;
        GetMaxSize(&width, &height);
        const QRectF target(-horizontalScrollBar()->value(),
                            -verticalScrollBar()->value(),
                            width,
                            height);
        painter.setRenderHint(QPainter::SmoothPixmapTransform, fScale < 1.0f);
        painter.drawImage(target, fBitmap);
    } else if (fMode == 1) {
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.drawImage(QRectF(viewport()->rect()), fBitmap);
    } else {
        std::printf("[%s:%d] scale_mode set to strange value (%ld)\n",
                    "iview",
                    __LINE__,
                    long(fMode));
        std::fflush(stdout);
    }
}

} // namespace kestrin
