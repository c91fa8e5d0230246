#include "viewer/TImageView.h"

#include "platform/Background.h"
#include "viewer/PngCorner.h"
#include "widgets/PlaceOnScreen.h"

#include <QBuffer>
#include <QImageReader>
#include <QPainter>
#include <QScreen>
#include <QScrollBar>
#include <cmath>
#include <cstdio>

namespace kestrin {

namespace {

// Decoded pixels and the part of the picture they cover.
struct Look
{
    QImage image;
    QRect area;
};

// The picture's size as it shows: turned where its metadata says so.
QSize ShownSize(QImageReader &reader)
{
    QSize size = reader.size();
    if (size.isValid() && (reader.transformation() & QImageIOHandler::TransformationRotate90))
        size.transpose();
    return size;
}

// What of a big picture shows soonest: the top-left corner of a PNG, as big
// as the screen (the first screen at full scale); the whole of a picture
// whose format decodes smaller at little cost, at the screen's size. Null
// where only the whole picture would do (a PNG decoded smaller still
// inflates and filters every row).
Look FirstLook(const std::string &path, const QString &file, QSize size, QSize screen)
{
    QImageReader probe(file);
    if (probe.format() == "png") {
        if (probe.transformation() != QImageIOHandler::TransformationNone)
            return {};
        QByteArray corner = PngCorner::Read(path, screen);
        if (corner.isEmpty())
            return {};
        QBuffer buffer(&corner);
        buffer.open(QIODevice::ReadOnly);
        const QImage image = QImageReader(&buffer, "png").read();
        return {image, QRect(QPoint(0, 0), image.size())};
    }
    if (!probe.supportsOption(QImageIOHandler::ScaledSize))
        return {};
    probe.setAutoTransform(true);
    probe.setScaledSize(probe.size().scaled(screen, Qt::KeepAspectRatio));
    return {probe.read(), QRect(QPoint(0, 0), size)};
}

// The whole picture; one of more than `most` pixels smaller.
QImage Whole(QImageReader &reader, int64_t most)
{
    const QSize size = reader.size();
    if (size.isValid() && int64_t(size.width()) * size.height() > most) {
        const double shrink = std::sqrt(double(most) / size.width() / size.height());
        reader.setScaledSize(QSize(std::max(1, int(size.width() * shrink)),
                                   std::max(1, int(size.height() * shrink))));
    }
    return reader.read();
}

} // namespace

TImageView::TImageView(const std::string &path, QPoint origin, QWidget *parent)
    : QAbstractScrollArea(parent)
    , fOrigin(origin)
{
    setObjectName("imageView");
    setFrameShape(QFrame::NoFrame);
    Decode(path);
}

TImageView::~TImageView()
{
    fDecode.Stop();
}

void TImageView::Decode(const std::string &path)
{
    const QString file = QString::fromUtf8(path.c_str());
    const QSize screen = ScreenRoom(this).size().expandedTo(QSize(1, 1));
    fDecode = platform::Background::Start(
        this, [this, path, file, screen](const platform::Background::Task &task) {
            // Pictures that shrink only after decoding need room for all of
            // their pixels first.
            QImageReader::setAllocationLimit(0);
            QImageReader reader(file);
            reader.setAutoTransform(true);
            const QSize size = ShownSize(reader);
            // Reaches the view only while it lives: the task drops the call once
            // the view is gone.
            const auto deliver =
                [this, &task, size](const QImage &image, QRect area, bool complete) {
                    task.Post([this, image, size, area, complete] {
                        Take(image, size.isValid() ? size : image.size(), area, complete);
                    });
                };
            if (size.isValid() && int64_t(size.width()) * size.height() > kFirstLookPixels) {
                const Look look = FirstLook(path, file, size, screen);
                if (!look.image.isNull())
                    deliver(look.image, look.area, false);
            }
            if (task.Stopping())
                return;
            const QImage image = Whole(reader, kDecodedPixels);
            deliver(image, QRect(QPoint(0, 0), size.isValid() ? size : image.size()), true);
        });
}

void TImageView::Take(const QImage &image, QSize size, QRect area, bool complete)
{
    const bool first = !fDecoded;
    fDecoded = true;
    fComplete = complete;
    if (!image.isNull()) {
        fBitmap = image;
        fSize = size;
        fArea = area;
    } else {
        std::printf("Image load failed.\n");
        std::fflush(stdout);
        // What a first look showed stays.
        if (fBitmap.isNull()) {
            fSize = QSize();
            fArea = QRect();
        }
    }
    if (first && fFitWhenDecoded)
        SetImageScale(-1, 2);
    FixupScrollbars();
    viewport()->update();
    if (first)
        emit ImageDecoded(!fBitmap.isNull());
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
        const QScreen *screen = this->screen();
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
    // The decoded pixels go where their part of the picture goes, however
    // few of its pixels they are.
    if (fMode == 0) {
        const QRectF target(fArea.x() * fScale - horizontalScrollBar()->value(),
                            fArea.y() * fScale - verticalScrollBar()->value(),
                            fArea.width() * fScale,
                            fArea.height() * fScale);
        // Smoothed where pixels are lost or made up; a zoom into whole
        // pixels shows them as they are.
        painter.setRenderHint(QPainter::SmoothPixmapTransform,
                              target.width() < fBitmap.width() || fBitmap.width() < fArea.width());
        painter.drawImage(target, fBitmap);
    } else if (fMode == 1) {
        const QRectF view(viewport()->rect());
        const qreal across = view.width() / std::max(1, fSize.width());
        const qreal down = view.height() / std::max(1, fSize.height());
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.drawImage(QRectF(fArea.x() * across,
                                 fArea.y() * down,
                                 fArea.width() * across,
                                 fArea.height() * down),
                          fBitmap);
    } else {
        std::printf("[%s:%d] scale_mode set to strange value (%ld)\n",
                    "iview",
                    __LINE__,
                    long(fMode));
        std::fflush(stdout);
    }
}

} // namespace kestrin
