#include "desk/PictureDecoder.h"

#include "protocol/Limits.h"

#include <QBuffer>
#include <QImageReader>

namespace {

const QByteArray scanMarker = QByteArrayLiteral("\xff\xda"); // never inside the data of a scan

bool isAllowed(const QSize& size)
{
    return size.width() > 0 && size.height() > 0 && size.width() <= PictureDecoder::maxSide &&
           size.height() <= PictureDecoder::maxSide &&
           qint64{size.width()} * size.height() <= PictureDecoder::maxPixels;
}

} // namespace

QImage PictureDecoder::decode(const QByteArray& jpeg, const QSize& fitting)
{
    if (jpeg.size() > Limits::maxPictureBytes || jpeg.count(scanMarker) > maxScans) {
        return QImage();
    }
    QBuffer buffer;
    buffer.setData(jpeg);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer, QByteArrayLiteral("jpeg"));
    reader.setAutoDetectImageFormat(false); // no other format, whatever the bytes look like
    const QSize size = reader.size();
    if (!isAllowed(size)) {
        return QImage();
    }
    if (size.width() > fitting.width() || size.height() > fitting.height()) {
        reader.setScaledSize(size.scaled(fitting, Qt::KeepAspectRatio).expandedTo(QSize(1, 1)));
    }
    return reader.read().convertToFormat(QImage::Format_RGB32);
}
