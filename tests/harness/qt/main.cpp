// The main function of suites whose tests need Qt without windows.

#include "harness/Orphans.h"

#include <QCoreApplication>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

int main(int argc, char* argv[]) {
  const QCoreApplication application(argc, argv);
  const driftmark::test::Orphans orphans;
  testing::InitGoogleMock(&argc, argv);
  return RUN_ALL_TESTS();
}
