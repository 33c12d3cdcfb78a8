// How the folder panel looks, and which folder is the chosen one.

#include "platform/linux/dialogs/IconView.h"
#include "platform/linux/dialogs/LinuxDialogs.h"
#include "platform/linux/dialogs/WrappingLabel.h"
#include "support/Paths.h"

#include <algorithm>
#include <optional>
#include <string>

#include <QDialogButtonBox>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QHeaderView>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QScreen>
#include <QSettings>
#include <QSplitter>
#include <QToolButton>
#include <QTreeView>
#include <QUrl>
#include <QVBoxLayout>

namespace driftmark {

namespace {

constexpr int margin = 20;
constexpr QSize defaultSize(680, 480);
constexpr int gapBelowMessage = 12;
constexpr int maxSidebarWidth = 190;

/// Qt's first buttons: back, forward, up. The others make folders and change the view.
constexpr qsizetype usedTools = 3;

QString displayed(const std::string& path) {
  return QFile::decodeName(path.c_str());
}

std::string bytes(const QString& path) {
  return QFile::encodeName(path).toStdString();
}

/// The nearest folder, from `path` upwards, that exists and can be shown.
std::string openingFolder(const std::string& path) {
  std::string folder = path.starts_with('/') ? std::string(withoutTrailingSlashes(path)) : "/";
  while (folder != "/" &&
         (bytes(displayed(folder)) != folder || !QFileInfo(displayed(folder)).isDir()))
    folder = deletingLastPathComponent(folder);
  return folder;
}

/// The row of that widget; -1 when it is not in the grid.
int rowOf(const QGridLayout& grid, QWidget& widget) {
  const int index = grid.indexOf(&widget);
  if (index < 0)
    return -1;
  int row = 0;
  int column = 0;
  int rowSpan = 0;
  int columnSpan = 0;
  grid.getItemPosition(index, &row, &column, &rowSpan, &columnSpan);
  return row;
}

/// Qt saves the state of its file dialogs in the user's settings, and reads it when a dialog is
/// constructed. This redirects the settings to a path that cannot exist. Returns the dialog's
/// parent, which is none.
QWidget* withoutSettings() {
  QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, QStringLiteral("/dev/null"));
  return nullptr;
}

/// The window in which a folder is chosen, with the message above the folders. Hidden folders are
/// chosen by typing their path. A folder whose name is not UTF-8 cannot be shown: the panel opens
/// at the next folder above it instead. The panel changes no folders and saves neither settings nor
/// a history. The parts of Qt's dialog are found by their types; one that is missing is left as it
/// is. Object name of the message: `message`.
class FolderDialog final : public QFileDialog {
public:
  explicit FolderDialog(const FolderPanel& panel);

  /// Shows the panel until it is answered or closed, or the application ends. Returns the chosen
  /// folder; the one that the panel opened at is returned by the path that was given.
  std::optional<std::string> run();

protected:
  void showEvent(QShowEvent* event) override;
  void accept() override;

private:
  void addMessage(const std::string& text);
  void arrange();
  void arrangeBelowFolders(QGridLayout& grid);
  void listPlaces(const std::string& directoryName);
  void followNameField();
  QString folder() const;
  bool hasFolder() const;

  QListView* places() const;

  const std::string directory_; ///< the one that it opens at
};

FolderDialog::FolderDialog(const FolderPanel& panel)
    : QFileDialog(withoutSettings()), directory_(openingFolder(panel.directory)) {
  setOptions(DontUseNativeDialog | ShowDirsOnly | ReadOnly);
  setFileMode(Directory);
  setViewMode(Detail);
  setLayoutDirection(Qt::LeftToRight);
  setWindowTitle(QString::fromStdString(panel.title));
  setWindowIcon(applicationIcon());
  setLabelText(Accept, QString::fromStdString(panel.prompt));
  setLabelText(FileName, QStringLiteral("Folder:"));
  setDirectory(displayed(directory_));
  addMessage(panel.message);
  arrange();
  listPlaces(directory_ == withoutTrailingSlashes(panel.directory) ? panel.directoryName : "");
  followNameField();
}

void FolderDialog::addMessage(const std::string& text) {
  auto* const frame = new QWidget(this);
  auto* const column = new QVBoxLayout(frame);
  column->setContentsMargins(margin, margin, margin, 0);
  auto* const message = new WrappingLabel(QString::fromStdString(text));
  message->setObjectName("message");
  column->addWidget(message);
  // The layout belongs to Qt's dialog; a menu bar is the one widget that it shows above itself.
  layout()->setMenuBar(frame);
}

void FolderDialog::arrange() {
  const auto tools = findChildren<QToolButton*>();
  for (qsizetype index = usedTools; index < tools.size(); ++index)
    tools[index]->hide();
  if (auto* const folders = findChild<QTreeView*>()) {
    for (int column = 1; column < folders->model()->columnCount(); ++column)
      folders->hideColumn(column);
    folders->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    folders->setHeaderHidden(true);
    folders->setAccessibleName(QStringLiteral("Folders"));
  }
  if (auto* const list = places()) {
    list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list->setAccessibleName(QStringLiteral("Places"));
  }
  layout()->setContentsMargins(margin, gapBelowMessage, margin, margin);
  if (auto* const grid = qobject_cast<QGridLayout*>(layout()))
    arrangeBelowFolders(*grid);
  resize(defaultSize.boundedTo(screen()->availableSize() - QSize(2 * margin, 2 * margin)));
  const int sidebar = std::min(maxSidebarWidth, width() / 3);
  if (auto* const splitter = findChild<QSplitter*>())
    splitter->setSizes({sidebar, width() - sidebar});
}

/// Leaves the field for the name and, below it, the buttons. Qt has the types of files there, too.
void FolderDialog::arrangeBelowFolders(QGridLayout& grid) {
  auto* const field = findChild<QLineEdit*>();
  auto* const buttons = findChild<QDialogButtonBox*>();
  if (field == nullptr || buttons == nullptr)
    return;
  const int fieldRow = rowOf(grid, *field);
  for (QWidget* const widget : findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly))
    if (widget != buttons && rowOf(grid, *widget) > fieldRow)
      widget->hide();
  grid.addWidget(field, fieldRow, 1, 1, -1);
  buttons->setOrientation(Qt::Horizontal);
  grid.addWidget(buttons, grid.rowCount(), 0, 1, -1);
}

/// The list beside the folders.
QListView* FolderDialog::places() const {
  const auto* const splitter = findChild<QSplitter*>();
  return splitter != nullptr ? qobject_cast<QListView*>(splitter->widget(0)) : nullptr;
}

/// Lists the opening folder, if it has a name for that, and the home folder. Qt names both after
/// their folders, and does so again whenever it has read these.
void FolderDialog::listPlaces(const std::string& directoryName) {
  QStringList names{QStringLiteral("Home")};
  QList<QUrl> folders{QUrl::fromLocalFile(QDir::homePath())};
  if (!directoryName.empty()) {
    names.prepend(QString::fromStdString(directoryName));
    folders.prepend(QUrl::fromLocalFile(displayed(directory_)));
  }
  setSidebarUrls(folders);
  auto* const list = this->places();
  if (list == nullptr)
    return;
  auto* const places = list->model();
  const auto rename = [places, names] {
    for (int row = 0; row < names.size(); ++row)
      if (const QModelIndex place = places->index(row, 0);
          place.isValid() && place.data().toString() != names[row])
        places->setData(place, names[row], Qt::DisplayRole);
  };
  connect(places, &QAbstractItemModel::dataChanged, this, rename);
  rename();
}

void FolderDialog::followNameField() {
  auto* const field = findChild<QLineEdit*>();
  auto* const buttons = findChild<QDialogButtonBox*>();
  if (field == nullptr || buttons == nullptr)
    return;
  connect(field, &QLineEdit::textChanged, this, [this, buttons] {
    if (auto* const choose = buttons->button(QDialogButtonBox::Open))
      choose->setEnabled(hasFolder());
  });
}

/// The name field decides; Qt writes the name of a selected folder into it. Qt itself would refuse
/// a hidden folder, as its list does not show it.
QString FolderDialog::folder() const {
  const auto* const field = findChild<QLineEdit*>();
  const QString written = field != nullptr ? field->text() : QString();
  if (written.isEmpty())
    return QDir::cleanPath(selectedFiles().value(0));
  QString path = QDir::cleanPath(directory().absoluteFilePath(written));
  if (written != "~" && !written.startsWith("~/"))
    return path;
  return QFileInfo(path).isDir() ? path : QDir::cleanPath(QDir::homePath() + written.mid(1));
}

bool FolderDialog::hasFolder() const {
  return QFileInfo(folder()).isDir();
}

void FolderDialog::accept() {
  if (hasFolder())
    QDialog::accept(); // NOLINT(bugprone-parent-virtual-call): Qt's own would refuse hidden ones
}

std::optional<std::string> FolderDialog::run() {
  if (exec() != Accepted)
    return std::nullopt;
  return folder() == QDir::cleanPath(displayed(directory_)) ? directory_ : bytes(folder());
}

/// Without other windows the program is not in front, so the panel would not be either.
void FolderDialog::showEvent(QShowEvent* event) {
  QFileDialog::showEvent(event);
  raise();
  activateWindow();
}

} // namespace

std::optional<std::string> LinuxDialogs::chooseFolder(const FolderPanel& panel) {
  return FolderDialog(panel).run();
}

} // namespace driftmark
