#include <gtest/gtest.h>

#include <QApplication>

// Tests of windows: GoogleTest under a Qt application.
int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  // CTest asks for the list of tests without the environment that it runs them in.
  if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", QUARN_TEST_PLATFORM);
  QApplication application(argc, argv);
  QApplication::setQuitOnLastWindowClosed(false);
  return RUN_ALL_TESTS();
}
