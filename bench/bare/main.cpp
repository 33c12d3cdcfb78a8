// Nothing but a QApplication: what any program of this toolkit costs.

#include <QApplication>

int main(int argc, char* argv[]) {
  const QApplication application(argc, argv);
  return QApplication::exec();
}
