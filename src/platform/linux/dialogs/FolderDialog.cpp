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
#include <QTreeView>
#include <QUrl>
#include <QVBoxLayout>

namespace driftmark {

namespace {

constexpr int margin = 20;
constexpr QSize defaultSize(680, 480);
constexpr int gapBelowMessage = 12;
constexpr int maxSidebarWidth = 190;

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
/// a history. Object name of the message: `message`.
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
  void listPlaces(const std::string& directoryName);
  void followNameField();
  QString folder() const;
  bool hasFolder() const;

  /// A widget of Qt's dialog.
  template <class Widget> Widget& part(const char* name) const;

  const std::string directory_; ///< the one that it opens at
};

template <class Widget> Widget& FolderDialog::part(const char* name) const {
  auto* const widget = findChild<Widget*>(QLatin1String(name));
  Q_ASSERT(widget != nullptr);
  return *widget;
}

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
  for (const char* const name :
       {"fileTypeLabel", "fileTypeCombo", "newFolderButton", "listModeButton", "detailModeButton"})
    part<QWidget>(name).hide();
  auto& folders = part<QTreeView>("treeView");
  for (int column = 1; column < folders.model()->columnCount(); ++column)
    folders.hideColumn(column);
  folders.header()->setSectionResizeMode(0, QHeaderView::Stretch);
  folders.setHeaderHidden(true);
  folders.setAccessibleName(QStringLiteral("Folders"));
  auto& places = part<QListView>("sidebar");
  places.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  places.setAccessibleName(QStringLiteral("Places"));
  layout()->setContentsMargins(margin, gapBelowMessage, margin, margin);
  if (auto* const grid = qobject_cast<QGridLayout*>(layout())) {
    grid->addWidget(&part<QWidget>("fileNameEdit"), grid->rowCount() - 2, 1, 1, -1);
    auto& buttons = part<QDialogButtonBox>("buttonBox");
    buttons.setOrientation(Qt::Horizontal);
    grid->addWidget(&buttons, grid->rowCount(), 0, 1, -1);
  }
  resize(defaultSize.boundedTo(screen()->availableSize() - QSize(2 * margin, 2 * margin)));
  const int sidebar = std::min(maxSidebarWidth, width() / 3);
  part<QSplitter>("splitter").setSizes({sidebar, width() - sidebar});
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
  auto* const places = part<QListView>("sidebar").model();
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
  connect(&part<QLineEdit>("fileNameEdit"), &QLineEdit::textChanged, this, [this] {
    part<QDialogButtonBox>("buttonBox").button(QDialogButtonBox::Open)->setEnabled(hasFolder());
  });
}

/// The name field decides; Qt writes the name of a selected folder into it. Qt itself would refuse
/// a hidden folder, as its list does not show it.
QString FolderDialog::folder() const {
  const QString written = part<QLineEdit>("fileNameEdit").text();
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
