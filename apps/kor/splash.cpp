#include "splash.h"

#include <QApplication>
#include <QLinearGradient>
#include <QPainter>

namespace kor {
namespace {

QPixmap SplashPicture() {
  QPixmap pixmap(440, 220);
  QPainter painter(&pixmap);
  QLinearGradient gradient(0, 0, 0, pixmap.height());
  gradient.setColorAt(0, QColor(231, 235, 239));
  gradient.setColorAt(1, QColor(181, 193, 217));
  painter.fillRect(pixmap.rect(), gradient);
  painter.setPen(QColor(80, 100, 174));
  QFont title = QApplication::font();
  title.setPointSize(28);
  title.setBold(true);
  painter.setFont(title);
  painter.drawText(QRect(0, 40, pixmap.width(), 60), Qt::AlignCenter, "Ketrova");
  QFont line = QApplication::font();
  line.setPointSize(11);
  painter.setFont(line);
  painter.drawText(QRect(0, 100, pixmap.width(), 30), Qt::AlignCenter, "Datenkonvertierung");
  return pixmap;
}

}  // namespace

Splash::Splash() : QSplashScreen(SplashPicture()) {
  setObjectName("Splash");
}

void Splash::SetInfo(const std::string& text) {
  lines_.push_back(text);
  showMessage(QString::fromStdString(text), Qt::AlignBottom | Qt::AlignHCenter,
              QColor(80, 100, 174));
  QApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

}  // namespace kor
