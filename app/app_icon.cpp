#include "app/app_icon.hpp"

#include <QByteArray>
#include <QPixmap>

#include "app/app_icon_svg.hpp"

namespace orvane::app {

QIcon applicationIcon() {
  QIcon builtIn;
  // Raster sizes from the built-in SVG, so that no SVG icon engine is needed.
  QPixmap picture;
  if (picture.loadFromData(QByteArray(kAppIconSvg), "SVG")) {
    for (const int side : {16, 32, 48, 64, 128, 256}) {
      builtIn.addPixmap(picture.scaled(side, side, Qt::KeepAspectRatio, Qt::SmoothTransformation));
    }
  }
  return QIcon::fromTheme(QStringLiteral("orvane"), builtIn);
}

}  // namespace orvane::app
