// Nothing but a QApplication: what every Qt program costs.

#include <QApplication>

int main(int argc, char* argv[]) {
  const QApplication application(argc, argv);
  return QApplication::exec();
}
