#include "qt_util/qt_compat_p.h"

#include <QtGlobal>
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
#include <QBitArray>
#include <QBitmap>
#include <QDateTime>
#include <QIcon>
#include <QImage>
#include <QJsonDocument>
#include <QJsonValue>
#include <QLine>
#include <QPixmap>
#include <QPolygon>
#include <QRect>
#include <QRegion>
#include <QUuid>
#include <QVector2D>
#include <QVector3D>
#include <QVector4D>
#endif

namespace qt_util::internal {

#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)

namespace {

template <typename T>
bool HeldIsNull(const QVariant& value) {
  return static_cast<const T*>(value.constData())->isNull();
}

// Qt 5's QVector::isNull(): never allocated. Qt 6's QList keeps no data pointer until then.
template <typename T>
bool HeldListIsNull(const QVariant& value) {
  return static_cast<const T*>(value.constData())->constData() == nullptr;
}

}  // namespace

// The types are those whose values Qt 5.15's QVariant::isNull() asked, found by asking it of a
// default-constructed value of every built-in type.
bool IsNullAsInQt5(const QVariant& value) {
  if (value.isNull()) return true;
  switch (value.userType()) {
    case QMetaType::QChar:
      return HeldIsNull<QChar>(value);
    case QMetaType::QString:
      return HeldIsNull<QString>(value);
    case QMetaType::QByteArray:
      return HeldIsNull<QByteArray>(value);
    case QMetaType::QBitArray:
      return HeldIsNull<QBitArray>(value);
    case QMetaType::QDate:
      return HeldIsNull<QDate>(value);
    case QMetaType::QTime:
      return HeldIsNull<QTime>(value);
    case QMetaType::QDateTime:
      return HeldIsNull<QDateTime>(value);
    case QMetaType::QRect:
      return HeldIsNull<QRect>(value);
    case QMetaType::QRectF:
      return HeldIsNull<QRectF>(value);
    case QMetaType::QLine:
      return HeldIsNull<QLine>(value);
    case QMetaType::QLineF:
      return HeldIsNull<QLineF>(value);
    case QMetaType::QPoint:
      return HeldIsNull<QPoint>(value);
    case QMetaType::QPointF:
      return HeldIsNull<QPointF>(value);
    case QMetaType::QUuid:
      return HeldIsNull<QUuid>(value);
    case QMetaType::QVariant:
      return IsNullAsInQt5(*static_cast<const QVariant*>(value.constData()));
    case QMetaType::QJsonValue:
      return HeldIsNull<QJsonValue>(value);
    case QMetaType::QJsonDocument:
      return HeldIsNull<QJsonDocument>(value);
    case QMetaType::QPixmap:
      return HeldIsNull<QPixmap>(value);
    case QMetaType::QIcon:
      return HeldIsNull<QIcon>(value);
    case QMetaType::QImage:
      return HeldIsNull<QImage>(value);
    case QMetaType::QPolygon:
      return HeldListIsNull<QPolygon>(value);
    case QMetaType::QRegion:
      return HeldIsNull<QRegion>(value);
    case QMetaType::QBitmap:
      return HeldIsNull<QBitmap>(value);
    case QMetaType::QVector2D:
      return HeldIsNull<QVector2D>(value);
    case QMetaType::QVector3D:
      return HeldIsNull<QVector3D>(value);
    case QMetaType::QVector4D:
      return HeldIsNull<QVector4D>(value);
    case QMetaType::QPolygonF:
      return HeldListIsNull<QPolygonF>(value);
    default:
      return false;
  }
}

#else

bool IsNullAsInQt5(const QVariant& value) {
  return value.isNull();
}

#endif

}  // namespace qt_util::internal
