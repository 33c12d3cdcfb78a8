#include "process/ChildProcess.h"

#include <QCoreApplication>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

int main(int argc, char* argv[]) {
  const QCoreApplication application(argc, argv);
  icloud::adoptOrphans();
  testing::InitGoogleMock(&argc, argv);
  return RUN_ALL_TESTS();
}
