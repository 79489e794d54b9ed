#pragma once

// Camera-style JPEGs for orientation tests: Qt writes a plain JPEG, and WithExifOrientation
// inserts an APP1 "Exif" segment right after the start-of-image marker whose only entry is the
// Orientation tag (0x0112), the way a camera records how it was held.
//
//   QByteArray jpeg = test_support::JpegBytes(image);
//   QFile(path).write(test_support::WithExifOrientation(jpeg, 6));  // 6: rotate 90 clockwise

#include <QBuffer>
#include <QByteArray>
#include <QImage>
#include <QImageWriter>

namespace test_support {

/// The image as Qt writes it in JPEG format (quality 95).
inline QByteArray JpegBytes(const QImage& image) {
  QByteArray bytes;
  QBuffer buffer(&bytes);
  buffer.open(QIODevice::WriteOnly);
  QImageWriter writer(&buffer, "jpeg");
  writer.setQuality(95);
  writer.write(image);
  return bytes;
}

/// `jpeg` with an Exif segment carrying `orientation` (1 to 8, the Exif values); the input
/// unchanged when it does not start with the start-of-image marker.
inline QByteArray WithExifOrientation(const QByteArray& jpeg, quint16 orientation) {
  if (!jpeg.startsWith("\xFF\xD8")) return jpeg;
  // Big-endian TIFF header, one IFD at offset 8 holding one SHORT entry, no next IFD.
  const char tiff[] = {'M',
                       'M',
                       0x00,
                       0x2A,
                       0x00,
                       0x00,
                       0x00,
                       0x08,  // header
                       0x00,
                       0x01,  // one entry
                       0x01,
                       0x12,
                       0x00,
                       0x03,
                       0x00,
                       0x00,
                       0x00,
                       0x01,  // Orientation, SHORT, 1
                       char(orientation >> 8),
                       char(orientation & 0xFF),
                       0x00,
                       0x00,  // value, padded
                       0x00,
                       0x00,
                       0x00,
                       0x00};  // no next IFD
  QByteArray payload = QByteArray("Exif\0\0", 6) + QByteArray(tiff, int(sizeof tiff));
  const int length = payload.size() + 2;  // the length field counts itself
  QByteArray segment("\xFF\xE1");
  segment.append(char(length >> 8)).append(char(length & 0xFF)).append(payload);
  return jpeg.left(2) + segment + jpeg.mid(2);
}

}  // namespace test_support
