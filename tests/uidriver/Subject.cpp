// The program that the tests of the UI driver drive.

#include <QApplication>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QMouseEvent>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

/// A widget that reports which mouse button was pressed on it.
class Strip : public QWidget {
public:
  explicit Strip(QWidget* parent) : QWidget(parent) {
    setObjectName("strip");
    setToolTip("a tip");
    setAccessibleName("the strip");
    setFixedSize(200, 24);
  }

  std::function<void(Qt::MouseButton)> onPress;

protected:
  void mousePressEvent(QMouseEvent* event) override { onPress(event->button()); }
};

bool ask(const QString& question, const QStringList& titles) {
  QMessageBox box;
  box.setText(question);
  box.setInformativeText("informative");
  QPushButton* first = nullptr;
  for (const QString& title : titles) {
    auto* const button = box.addButton(title, QMessageBox::AcceptRole);
    if (first == nullptr)
      first = button;
  }
  box.setDefaultButton(first);
  box.exec();
  return box.clickedButton() == first;
}

QString pickedFolder() {
  QFileDialog panel;
  panel.setOption(QFileDialog::DontUseNativeDialog);
  panel.setFileMode(QFileDialog::Directory);
  panel.setLabelText(QFileDialog::Accept, "Take this");
  return panel.exec() == QDialog::Accepted ? panel.selectedFiles().first() : "no folder";
}

} // namespace

int main(int argc, char* argv[]) {
  const QApplication application(argc, argv);
  QWidget window;
  window.setWindowTitle("subject");
  auto* const layout = new QVBoxLayout(&window);
  auto* const label = new QLabel("nothing", &window);
  auto* const line = new QLineEdit(&window);
  line->setObjectName("line");
  auto* const askButton = new QPushButton("&Ask && wait", &window);
  auto* const offButton = new QPushButton("Off", &window);
  offButton->setEnabled(false);
  auto* const folderButton = new QPushButton("Folder", &window);
  auto* const strip = new Strip(&window);
  for (QWidget* const widget :
       std::initializer_list<QWidget*>{label, line, askButton, offButton, folderButton, strip})
    layout->addWidget(widget);

  QMenu menu;
  QAction* const greet = menu.addAction("Greet && go");
  greet->setShortcut(QKeySequence("Ctrl+G"));
  QAction* const checked = menu.addAction("Checked");
  checked->setCheckable(true);
  checked->setChecked(true);
  menu.addSeparator();
  menu.addAction("Never")->setEnabled(false);
  QObject::connect(greet, &QAction::triggered, label, [label] { label->setText("greeted"); });

  QObject::connect(askButton, &QPushButton::clicked, label, [label] {
    const bool first = ask("First?", {"Yes", "No"});
    const bool second = ask("Second?", {"Yes", "No"});
    label->setText(QString("%1 %2").arg(first ? "yes" : "no", second ? "yes" : "no"));
  });
  QObject::connect(folderButton, &QPushButton::clicked, label,
                   [label] { label->setText(pickedFolder()); });
  QObject::connect(line, &QLineEdit::textChanged, label, &QLabel::setText);
  QObject::connect(line, &QLineEdit::returnPressed, qApp, &QCoreApplication::quit);
  strip->onPress = [&](Qt::MouseButton button) {
    if (button == Qt::RightButton)
      label->setText("right");
    else
      menu.exec(strip->mapToGlobal(QPoint(0, strip->height())));
  };
  window.show();
  return QApplication::exec();
}
