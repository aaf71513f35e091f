// Build-time tool: renders an SVG picture into a raster file (PNG or ICO) of the given size,
// so that the pictures which must be raster files are made from the same drawings as the rest.
#include <QCoreApplication>
#include <QImage>
#include <QImageWriter>
#include <QPainter>
#include <QSvgRenderer>
#include <QTextStream>

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    const QStringList args = QCoreApplication::arguments();
    QTextStream err(stderr);
    if (args.size() != 4) {
        err << "usage: tavrin_rasterize <in.svg> <out.png|out.ico> <size>\n";
        return 2;
    }
    QSvgRenderer renderer(args.at(1));
    if (!renderer.isValid()) {
        err << "cannot read " << args.at(1) << "\n";
        return 1;
    }
    bool ok = false;
    const int size = args.at(3).toInt(&ok);
    if (!ok || size <= 0 || size > 256) {
        err << "bad size " << args.at(3) << "\n";
        return 2;
    }
    QSize target = renderer.defaultSize();
    target.scale(size, size, Qt::KeepAspectRatio);
    QImage image(size, size, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    {
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        const QRect box((size - target.width()) / 2, (size - target.height()) / 2, target.width(), target.height());
        renderer.render(&painter, box);
    }
    QImageWriter writer(args.at(2));
    if (!writer.write(image)) {
        err << "cannot write " << args.at(2) << ": " << writer.errorString() << "\n";
        return 1;
    }
    return 0;
}
