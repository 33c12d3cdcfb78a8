#include "platform/linux/HomeTrash.h"

#include "platform/posix/FilePath.h"
#include "platform/posix/ItemMove.h"

#include <cerrno>

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QStandardPaths>

namespace driftmark {

namespace {

QByteArray note(const std::string& path) {
  return "[Trash Info]\nPath=" + QByteArray::fromStdString(path).toPercentEncoding("/") +
         "\nDeletionDate=" + QDateTime::currentDateTime().toString(Qt::ISODate).toLatin1() + "\n";
}

/// Claims the name by its note; false when it is taken.
bool claim(QFile& noteFile, const std::string& path) {
  if (!noteFile.open(QIODevice::WriteOnly | QIODevice::NewOnly))
    return false;
  const QByteArray text = note(path);
  return noteFile.write(text) == text.size() && noteFile.flush();
}

} // namespace

int moveToHomeTrash(const std::string& path) {
  const QString trash =
      QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + "/Trash";
  if (!QDir().mkpath(trash + "/files") || !QDir().mkpath(trash + "/info"))
    return EACCES;
  const QString name = QFile::decodeName(file_path::name(path).c_str());
  int error = EEXIST;
  for (int copy = 1; error == EEXIST; ++copy) {
    const QString own = copy == 1 ? name : QString("%1.%2").arg(name).arg(copy);
    QFile noteFile(trash + "/info/" + own + ".trashinfo");
    if (noteFile.exists())
      continue;
    if (!claim(noteFile, path))
      return errno != 0 ? errno : EIO;
    error = moveTree(path, QFile::encodeName(trash + "/files/" + own).toStdString());
    if (error != 0)
      noteFile.remove();
  }
  return error;
}

} // namespace driftmark
