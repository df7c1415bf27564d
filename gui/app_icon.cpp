#include "gui/app_icon.h"

#include <cmath>

#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

namespace quarvel {

QIcon appIcon() {
  QIcon icon;
  for (int size : {16, 32, 64}) {
    QPixmap pixmap(size, size);
    pixmap.fill(Qt::transparent);
    QPainter p(&pixmap);
    p.setRenderHint(QPainter::Antialiasing);
    p.setBrush(QColor(250, 250, 245));
    p.setPen(QPen(QColor(60, 60, 90), size / 32.0));
    p.drawRoundedRect(QRectF(0.5, 0.5, size - 1.0, size - 1.0), size / 8.0, size / 8.0);
    QPainterPath curve;
    const double peaks[][3] = {{0.3, 0.7, 0.035}, {0.55, 0.45, 0.04}, {0.78, 0.3, 0.045}};
    for (int i = 0; i <= 100; ++i) {
      const double x = i / 100.0;
      double y = 0.1 + 0.08 * (1.0 - x);
      for (const auto& pk : peaks) y += pk[1] * std::exp(-0.5 * std::pow((x - pk[0]) / pk[2], 2));
      const QPointF at(size * (0.1 + 0.8 * x), size * (0.9 - 0.8 * y));
      if (i == 0) curve.moveTo(at); else curve.lineTo(at);
    }
    p.setBrush(Qt::NoBrush);
    p.setPen(QPen(QColor(0, 0, 160), std::max(1.0, size / 20.0)));
    p.drawPath(curve);
    icon.addPixmap(pixmap);
  }
  return icon;
}

}  // namespace quarvel
