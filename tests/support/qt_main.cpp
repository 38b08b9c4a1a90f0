#include <QApplication>
#include <clocale>

#include <gmock/gmock.h>

// One application object for all cases of a program, set up like that of the real window.
int main(int argc, char** argv) {
  ::testing::InitGoogleMock(&argc, argv);
  if (GTEST_FLAG_GET(list_tests)) {
    return RUN_ALL_TESTS();  // prints names only; this runs at build time, possibly without a display
  }
  QApplication application(argc, argv);
  std::setlocale(LC_NUMERIC, "C");  // the application object sets the locale from the environment
  QApplication::setStyle(QStringLiteral("Fusion"));
  return RUN_ALL_TESTS();
}
