#include "platform/linux/dialogs/FolderDialog.h"

#include "platform/linux/menubar/WrappedText.h"
#include "support/Paths.h"

#include <algorithm>

#include <QDialogButtonBox>
#include <QDir>
#include <QFile>
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
constexpr QSize usualSize(680, 480);
constexpr int gapBelowMessage = 12;
constexpr int widestSidebar = 190;

QString shown(const std::string& path) {
  return QFile::decodeName(path.c_str());
}

std::string bytes(const QString& path) {
  return QFile::encodeName(path).toStdString();
}

/// The nearest folder, from `path` upwards, that exists and can be shown.
std::string openingFolder(const std::string& path) {
  std::string folder = path.starts_with('/') ? std::string(withoutTrailingSlashes(path)) : "/";
  while (folder != "/" && (bytes(shown(folder)) != folder || !QFileInfo(shown(folder)).isDir()))
    folder = deletingLastPathComponent(folder);
  return folder;
}

/// Qt keeps what its own file dialogs remember in the user's settings, and reads them as soon as a
/// dialog is made. Nothing lies below this path. Returns the dialog's parent, which is none.
QWidget* withoutSettings() {
  QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, QStringLiteral("/dev/null"));
  return nullptr;
}

} // namespace

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
  setLabelText(Accept, QString::fromStdString(panel.prompt));
  setLabelText(FileName, QStringLiteral("Folder:"));
  setDirectory(shown(directory_));
  setSidebarUrls({QUrl::fromLocalFile(QDir::homePath()), QUrl::fromLocalFile(shown(directory_))});
  addMessage(panel.message);
  arrange();
  followTheName();
}

void FolderDialog::addMessage(const std::string& text) {
  auto* const frame = new QWidget(this);
  auto* const column = new QVBoxLayout(frame);
  column->setContentsMargins(margin, margin, margin, 0);
  auto* const message = new WrappedText(QString::fromStdString(text));
  message->setObjectName("message");
  column->addWidget(message);
  // The layout is Qt's own, and this is the place above it.
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
  resize(usualSize.boundedTo(screen()->availableSize() - QSize(2 * margin, 2 * margin)));
  const int sidebar = std::min(widestSidebar, width() / 3);
  part<QSplitter>("splitter").setSizes({sidebar, width() - sidebar});
}

void FolderDialog::followTheName() {
  connect(&part<QLineEdit>("fileNameEdit"), &QLineEdit::textChanged, this, [this] {
    part<QDialogButtonBox>("buttonBox").button(QDialogButtonBox::Open)->setEnabled(hasFolder());
  });
}

/// What is written says which folder it is, as Qt writes the name of one that is selected. Qt
/// itself would not take a hidden one, since its list does not show it.
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
  return folder() == QDir::cleanPath(shown(directory_)) ? directory_ : bytes(folder());
}

/// A program without other windows is not in front by itself.
void FolderDialog::showEvent(QShowEvent* event) {
  QFileDialog::showEvent(event);
  raise();
  activateWindow();
}

} // namespace driftmark
