#include <QApplication>
#include <QStyleFactory>

#include <gtest/gtest.h>

int main(int argc, char* argv[]) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  const QApplication application(argc, argv);
  QApplication::setQuitOnLastWindowClosed(false);
  QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
