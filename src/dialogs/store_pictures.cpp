#include "dialogs/store_pictures.h"

#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

#include "core/enums.h"

namespace ketrova::dialogs {
namespace {

// Everything is drawn on a 32 x 32 grid and scaled to the pixmap's size.
constexpr double kGrid = 32.0;

struct Look {
  QColor colour;
  QString mark;  // a short text on the picture
};

Look LookOf(int type) {
  switch (type) {
    case dbtSQLServer:
      return {QColor(0xB0, 0x2A, 0x2A), QStringLiteral("SQL")};
    case dbtAccess:
      return {QColor(0x8E, 0x24, 0x3A), QStringLiteral("A")};
    case dbtInterbase:
      return {QColor(0xC0, 0x6A, 0x10), QStringLiteral("IB")};
    case dbtOracle:
      return {QColor(0xC7, 0x3B, 0x1C), QStringLiteral("O")};
    case dbtParadox:
      return {QColor(0x2F, 0x6F, 0x9F), QStringLiteral("DB")};
    case dbtMySQL:
      return {QColor(0x1F, 0x6B, 0x8A), QStringLiteral("My")};
    case dbtExcel:
      return {QColor(0x1E, 0x7A, 0x45), QStringLiteral("X")};
    case dbtOutlook:
      return {QColor(0x1D, 0x5F, 0xB0), QString()};
    case dbtODBC:
      return {QColor(0x55, 0x5F, 0x6B), QStringLiteral("ODBC")};
    case dbtText:
      return {QColor(0x6B, 0x6B, 0x6B), QString()};
    default:
      return {QColor(0x70, 0x70, 0x70), QString()};
  }
}

void DrawMark(QPainter& p, const QRectF& box, const QString& mark) {
  if (mark.isEmpty()) return;
  QFont font = p.font();
  font.setBold(true);
  font.setPixelSize(mark.size() >= 4 ? 6 : mark.size() == 3 ? 8 : 11);
  p.setFont(font);
  p.setPen(Qt::white);
  p.drawText(box, Qt::AlignCenter, mark);
}

// A database drum: the servers and file databases.
void DrawCylinder(QPainter& p, const Look& look) {
  const QRectF body(5, 6, 22, 21);
  const double lid = 6;
  QPainterPath path;
  path.moveTo(body.left(), body.top() + lid / 2);
  path.lineTo(body.left(), body.bottom() - lid / 2);
  path.arcTo(QRectF(body.left(), body.bottom() - lid, body.width(), lid), 180, 180);
  path.lineTo(body.right(), body.top() + lid / 2);
  path.arcTo(QRectF(body.left(), body.top(), body.width(), lid), 0, 180);
  p.setPen(QPen(look.colour.darker(140), 1));
  p.setBrush(look.colour);
  p.drawPath(path);
  p.setBrush(look.colour.lighter(150));
  p.drawEllipse(QRectF(body.left(), body.top(), body.width(), lid));
  DrawMark(p, QRectF(body.left(), body.top() + lid, body.width(), body.height() - lid), look.mark);
}

// A sheet with a grid: Excel.
void DrawSheet(QPainter& p, const Look& look) {
  const QRectF sheet(5, 4, 22, 24);
  p.setPen(QPen(look.colour.darker(140), 1));
  p.setBrush(Qt::white);
  p.drawRect(sheet);
  p.setPen(QPen(look.colour.lighter(130), 0.8));
  for (double y = sheet.top() + 6; y < sheet.bottom(); y += 4.5)
    p.drawLine(QPointF(sheet.left(), y), QPointF(sheet.right(), y));
  for (double x = sheet.left() + 7; x < sheet.right(); x += 7.5)
    p.drawLine(QPointF(x, sheet.top()), QPointF(x, sheet.bottom()));
  const QRectF badge(2, 11, 14, 14);
  p.setPen(Qt::NoPen);
  p.setBrush(look.colour);
  p.drawRoundedRect(badge, 2, 2);
  DrawMark(p, badge, look.mark);
}

// An envelope: Outlook.
void DrawEnvelope(QPainter& p, const Look& look) {
  const QRectF envelope(3, 8, 26, 17);
  p.setPen(QPen(look.colour.darker(140), 1.2));
  p.setBrush(QColor(0xF4, 0xF7, 0xFC));
  p.drawRect(envelope);
  p.setBrush(look.colour.lighter(160));
  QPolygonF flap;
  flap << envelope.topLeft() << QPointF(envelope.center().x(), envelope.center().y() + 2)
       << envelope.topRight();
  p.drawPolygon(flap);
}

// A page with lines of text: text files.
void DrawPage(QPainter& p, const Look& look) {
  QPolygonF page;
  page << QPointF(7, 3) << QPointF(20, 3) << QPointF(26, 9) << QPointF(26, 29) << QPointF(7, 29);
  p.setPen(QPen(look.colour.darker(130), 1));
  p.setBrush(Qt::white);
  p.drawPolygon(page);
  p.setBrush(QColor(0xDD, 0xDD, 0xDD));
  QPolygonF corner;
  corner << QPointF(20, 3) << QPointF(20, 9) << QPointF(26, 9);
  p.drawPolygon(corner);
  p.setPen(QPen(look.colour, 1.2));
  for (double y = 13; y < 27; y += 3.5) p.drawLine(QPointF(10, y), QPointF(23, y));
}

QPixmap Draw(int type, int size) {
  QPixmap pixmap(size, size);
  pixmap.fill(Qt::transparent);
  QPainter p(&pixmap);
  p.setRenderHint(QPainter::Antialiasing);
  p.setRenderHint(QPainter::TextAntialiasing);
  p.scale(size / kGrid, size / kGrid);
  const Look look = LookOf(type);
  switch (type) {
    case dbtExcel:
      DrawSheet(p, look);
      break;
    case dbtOutlook:
      DrawEnvelope(p, look);
      break;
    case dbtText:
      DrawPage(p, look);
      break;
    default:
      DrawCylinder(p, look);
      break;
  }
  return pixmap;
}

}  // namespace

QIcon StoreTypeIcon(int databaseType) {
  QIcon icon;
  for (int size : {16, 24, 32, 48, 64, 96}) icon.addPixmap(Draw(databaseType, size));
  return icon;
}

}  // namespace ketrova::dialogs
