#include <QApplication>

#include <gtest/gtest.h>

int main(int argc, char* argv[]) {
  // The windows of tests are drawn in memory, unless somebody wants to look at them.
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
    qputenv("QT_QPA_PLATFORM", "offscreen");
  const QApplication application(argc, argv);
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
