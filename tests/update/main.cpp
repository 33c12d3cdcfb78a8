#include <QCoreApplication>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

/// The servers of the tests need an application; nothing runs on its loop.
int main(int argc, char* argv[]) {
  const QCoreApplication application(argc, argv);
  testing::InitGoogleMock(&argc, argv);
  return RUN_ALL_TESTS();
}
