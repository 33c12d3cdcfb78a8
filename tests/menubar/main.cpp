#include "platform/linux/looks/Look.h"

#include <QApplication>

#include <gtest/gtest.h>

int main(int argc, char* argv[]) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  const QApplication application(argc, argv);
  QApplication::setQuitOnLastWindowClosed(false);
  driftmark::Look::apply();
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
