#include <QApplication>
#include <clocale>

#include <gmock/gmock.h>

// One application object for all the cases of a program, set up as the window's own bootstrap does it.
int main(int argc, char** argv) {
  ::testing::InitGoogleMock(&argc, argv);
  if (GTEST_FLAG_GET(list_tests)) {
    return RUN_ALL_TESTS();  // names only: listed at build time, where there may be no display
  }
  QApplication application(argc, argv);
  std::setlocale(LC_NUMERIC, "C");  // the application object takes it from the environment
  QApplication::setStyle(QStringLiteral("Fusion"));
  return RUN_ALL_TESTS();
}
