// The window's icon, which does not depend on where the program is installed.
#include <QFile>
#include <QIcon>
#include <QMainWindow>
#include <QXmlStreamReader>

#include <gtest/gtest.h>

#include "app/app_delegate.h"
#include "app/palette.h"
#include "app/tolvane_view_controller.h"
#include "support/scripted_hal.h"

namespace tolvane::test {
namespace {

TEST(WindowIcon, IsTheOneThatIsInstalled) {
  applyLook();
  ScriptedHal hal;
  AppDelegate delegate;
  delegate.applicationDidFinishLaunching();
  const QIcon icon = delegate.window()->windowIcon();
  ASSERT_FALSE(icon.isNull());
  // At half the size of the installed file's drawing.
  const QImage drawn = icon.pixmap(QSize(128, 128), 1.0).toImage();
  ASSERT_EQ(drawn.size(), QSize(128, 128));
  EXPECT_EQ(drawn.pixelColor(0, 0).alpha(), 0) << "its corners are round";
  // A rectangle in the installed file has its own colour or the colour of its group.
  QFile file(QStringLiteral(TOLVANE_ICON_FILE));
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  QXmlStreamReader reader(&file);
  QString groupFill;
  int rectangles = 0;
  while (!reader.atEnd()) {
    if (reader.readNext() != QXmlStreamReader::StartElement) continue;
    const QXmlStreamAttributes attributes = reader.attributes();
    if (reader.name() == u"g") groupFill = attributes.value("fill").toString();
    if (reader.name() != u"rect") continue;
    const auto number = [&attributes](const char* name) {
      return attributes.value(QLatin1String(name)).toInt();
    };
    const QString own = attributes.value("fill").toString();
    // Six units inside the shape: past the border, and not on one of the cells that cover the background.
    const QPoint inside(number("x") + 6, number("y") + number("height") / 2);
    EXPECT_EQ(drawn.pixelColor(inside / 2).name(), own.isEmpty() ? groupFill : own) << rectangles;
    ++rectangles;
  }
  EXPECT_EQ(rectangles, 17);
  for (const int size : {16, 32, 48}) {
    EXPECT_EQ(icon.pixmap(QSize(size, size), 1.0).size(), QSize(size, size));
  }
}

}  // namespace
}  // namespace tolvane::test
