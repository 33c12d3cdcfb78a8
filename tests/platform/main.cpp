// Runs the tests beside a QApplication.

#include "platform/linux/looks/Look.h"

#include <QApplication>

#include <gtest/gtest.h>

int main(int argc, char* argv[]) {
  // Windows are drawn in memory only, unless a developer wants to see them.
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
    qputenv("QT_QPA_PLATFORM", "offscreen");
  // Tests must not reach the desktop of the developer who runs them.
  qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/dev/null");
  const QApplication application(argc, argv);
  driftmark::Look::apply();
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
