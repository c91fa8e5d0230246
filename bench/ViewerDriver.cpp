// kestrin-viewer-driver FILE [NEEDLE]
// kestrin-viewer-driver --png FILE WIDTH HEIGHT   (writes a test picture)
// Opens FILE in a viewer window the way F3 does, on Qt's offscreen platform,
// and prints, one per line:
//   first_ms    from opening to the first screen painted (for a picture:
//               its first look decoded and painted)
//   whole_ms    for a picture, from opening until all of it is decoded and
//               painted
//   end_ms      from Ctrl+End to the last screen painted
//   index_ms    from opening until the text's index is complete
//   rows        rows in the index
//   rss_mb      growth of resident memory with the window open, index built
//   find_ms     a forward find of NEEDLE from the top, to the match shown

#include "BenchSupport.h"
#include "platform/AlertRecorder.h"
#include "viewer/TImageView.h"
#include "viewer/TextIndex.h"
#include "viewer/TextPager.h"
#include "viewer/ViewerWindow.h"

#include <QApplication>
#include <QEventLoop>
#include <QImageWriter>
#include <QKeyEvent>
#include <QTimer>
#include <chrono>
#include <cstdio>
#include <functional>

namespace {

// Runs the event loop until `done` holds, looking every millisecond.
void RunUntil(const std::function<bool()> &done)
{
    QEventLoop loop;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &loop, [&] {
        if (done())
            loop.quit();
    });
    timer.start(1);
    if (!done())
        loop.exec();
}

int WritePicture(const char *path, int width, int height)
{
    QImage image(width, height, QImage::Format_RGB32);
    for (int y = 0; y < height; y++) {
        auto *line = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < width; x++)
            line[x] = qRgb(x & 255, y & 255, (x ^ y) & 255);
    }
    QImageWriter writer(path, "png");
    writer.setCompression(9);
    return writer.write(image) ? 0 : 1;
}

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    if (argc == 5 && std::string(argv[1]) == "--png")
        return WritePicture(argv[2], atoi(argv[3]), atoi(argv[4]));
    if (argc < 2)
        return 2;
    platform::AlertRecorder alerts;
    const double before = ResidentMegabytes();
    const auto opened = std::chrono::steady_clock::now();
    kestrin::ViewerWindow window(QRect(50, 50, 200, 200), argv[1]);
    window.show();
    if (kestrin::TImageView *image = window.ImageView()) {
        RunUntil([image] { return image->Decoded(); });
        image->viewport()->repaint();
        printf("first_ms %.1f\nsize %dx%d\n",
               Milliseconds(opened),
               image->ImageSize().width(),
               image->ImageSize().height());
        RunUntil([image] { return image->Complete(); });
        image->viewport()->repaint();
        printf("whole_ms %.1f\n", Milliseconds(opened));
        printf("rss_mb %.1f\n", ResidentMegabytes() - before);
        return 0;
    }
    kestrin::TextPager *text = window.TextView();
    if (text == nullptr)
        return 1;
    // The text shows when the index's worker has read the first screen.
    RunUntil([text] { return text->Showing(); });
    text->viewport()->repaint();
    printf("first_ms %.1f\n", Milliseconds(opened));
    printf("indexed_at_first_screen %s\n", text->Index().Complete() ? "yes" : "no");

    const auto asked = std::chrono::steady_clock::now();
    QKeyEvent end(QEvent::KeyPress, Qt::Key_End, Qt::ControlModifier);
    QApplication::sendEvent(text, &end);
    text->viewport()->repaint();
    printf("end_ms %.1f\n", Milliseconds(asked));

    RunUntil([text] { return text->Index().Complete(); });
    printf("index_ms %.1f\nrows %lld\n",
           Milliseconds(opened),
           static_cast<long long>(text->Index().KnownRows()));
    printf("rss_mb %.1f\n", ResidentMegabytes() - before);

    if (argc > 2) {
        text->ScrollToStart();
        bool finished = false;
        QObject::connect(text, &kestrin::TextPager::SearchFinished, [&] { finished = true; });
        const auto search = std::chrono::steady_clock::now();
        text->Find(QString::fromUtf8(argv[2]), true);
        RunUntil([&] { return finished; });
        text->viewport()->repaint();
        printf("find_ms %.1f\nfound_at %lld\n",
               Milliseconds(search),
               static_cast<long long>(text->MatchOffset()));
    }
    return 0;
}
