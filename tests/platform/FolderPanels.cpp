// How the folder panel looks, and how a user chooses a folder.

#include "ScopedVariable.h"
#include "harness/TemporaryFolder.h"
#include "harness/qt/EventLoop.h"
#include "platform/linux/desktop/LinuxAdapters.h"
#include "platform/linux/dialogs/LinuxDialogs.h"
#include "platform/linux/runloop/LinuxMainQueue.h"

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>

#include <QAccessible>
#include <QApplication>
#include <QFileDialog>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QScreen>
#include <QTimer>
#include <QTreeView>

#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

namespace fs = std::filesystem;

QFileDialog* openPanel() {
  return qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
}

template <class Widget> Widget& part(const char* name) {
  return *openPanel()->findChild<Widget*>(name);
}

QLineEdit& nameField() {
  return part<QLineEdit>("fileNameEdit");
}

QPushButton& buttonTitled(const QString& title) {
  for (auto* const button : openPanel()->findChildren<QPushButton*>())
    if (button->text().remove('&') == title)
      return *button;
  throw std::runtime_error("no such button");
}

void pressKey(int key, const QString& text = {}) {
  QWidget* const target = openPanel()->focusWidget();
  for (const auto type : {QEvent::KeyPress, QEvent::KeyRelease}) {
    QKeyEvent event(type, key, Qt::NoModifier, text);
    QCoreApplication::sendEvent(target, &event);
  }
}

void type(const std::string& text) {
  for (const QChar character : QString::fromStdString(text))
    pressKey(0, character);
}

/// The listed folders in alphabetical order, once there are at least `count`.
QStringList listed(int count) {
  const auto& view = part<QTreeView>("treeView");
  runUntil([&] { return view.model()->rowCount(view.rootIndex()) >= count; });
  QStringList names;
  for (int row = 0; row < view.model()->rowCount(view.rootIndex()); ++row)
    names.append(view.model()->index(row, 0, view.rootIndex()).data().toString());
  names.sort();
  return names;
}

QModelIndex indexOf(const QString& name) {
  const auto& view = part<QTreeView>("treeView");
  const QModelIndex first = view.model()->index(0, 0, view.rootIndex());
  return view.model()->match(first, Qt::DisplayRole, name, 1, Qt::MatchExactly).value(0);
}

bool isSelected(const QString& name) {
  return part<QTreeView>("treeView").selectionModel()->isSelected(indexOf(name));
}

void select(const QString& name) {
  auto& view = part<QTreeView>("treeView");
  view.setFocus();
  view.setCurrentIndex(indexOf(name));
}

/// Saves a picture of the open panel in the folder that DRIFTMARK_SHOTS names, if any.
void photograph(const char* name) {
  // NOLINTNEXTLINE(concurrency-mt-unsafe): nothing here writes the environment
  if (const char* const folder = std::getenv("DRIFTMARK_SHOTS"))
    openPanel()->grab().save(QString("%1/%2.png").arg(folder, name));
}

class FolderPanels : public testing::Test {
protected:
  std::string in(const std::string& name) const { return folder_.path(name); }
  std::string make(const std::string& name) const {
    fs::create_directories(in(name));
    return in(name);
  }

  static FolderPanel panel(const std::string& directory) {
    return {.title = "Free Up Space",
            .message = "Choose a folder. Downloaded files inside it will be removed from this Mac; "
                       "they stay in iCloud and download again when opened.",
            .prompt = "Choose",
            .directory = directory,
            .directoryName = "iCloud Drive"};
  }

  /// Shows the panel at `directory`. `answer` runs once it has the keyboard focus and must close
  /// it.
  std::optional<std::string> show(const std::string& directory,
                                  const std::function<void()>& answer) {
    bool wasOpen = false;
    QTimer::singleShot(0, &context_, [&] {
      wasOpen = openPanel() && runUntil([] { return nameField().hasFocus(); });
      if (wasOpen)
        answer();
      if (QFileDialog* const unanswered = openPanel()) {
        ADD_FAILURE() << "unanswered: " << nameField().text().toStdString();
        unanswered->close();
      }
    });
    auto folder = dialogs_.chooseFolder(panel(directory));
    EXPECT_TRUE(wasOpen);
    EXPECT_EQ(openPanel(), nullptr);
    return folder;
  }

  static void choose() { buttonTitled("Choose").click(); }
  static void cancel() { buttonTitled("Cancel").click(); }

  static std::function<void()> typed(const std::string& text) {
    return [text] {
      type(text);
      choose();
    };
  }

  TemporaryFolder folder_;
  QObject context_;
  LinuxBundle bundle_{"/nowhere/driftmark", ""};
  LinuxDialogs dialogs_{bundle_};
};

TEST_F(FolderPanels, panelShowsGivenTexts) {
  show(folder_.path(), [&] {
    EXPECT_EQ(openPanel()->windowTitle(), "Free Up Space");
    const auto& message = part<QLabel>("message");
    EXPECT_EQ(message.text().toStdString(), panel("").message);
    EXPECT_EQ(message.textFormat(), Qt::PlainText);
    EXPECT_TRUE(buttonTitled("Choose").isDefault());
    cancel();
  });
}

TEST_F(FolderPanels, onlyVisibleFoldersAreListed) {
  make("b");
  make("a");
  make(".hidden");
  folder_.write("file", "");
  show(folder_.path(), [&] {
    EXPECT_EQ(listed(2), (QStringList{"a", "b"}));
    cancel();
  });
}

TEST_F(FolderPanels, confirmingAtOnceChoosesOpeningFolder) {
  EXPECT_EQ(show(folder_.path(), choose), folder_.path());
  EXPECT_EQ(show(make("Mobile Documents/com~apple~CloudDocs"), choose),
            in("Mobile Documents/com~apple~CloudDocs"));
  fs::create_directory_symlink("Mobile Documents", in("link"));
  EXPECT_EQ(show(in("link/com~apple~CloudDocs"), choose), in("link/com~apple~CloudDocs"));
  EXPECT_EQ(show(in("link"), choose), in("link"));
  EXPECT_EQ(show("/", choose), "/");
}

TEST_F(FolderPanels, placesHaveNamesOfTheirOwn) {
  const ScopedVariable home("HOME", make("ada"));
  const auto places = [this](const std::string& directory) {
    QStringList names;
    show(directory, [&names] {
      const auto& model = *part<QListView>("sidebar").model();
      for (int row = 0; row < model.rowCount(); ++row)
        names.append(model.index(row, 0).data().toString());
      cancel();
    });
    return names;
  };
  EXPECT_EQ(places(make("ada/com~apple~CloudDocs")), (QStringList{"iCloud Drive", "Home"}));
  EXPECT_EQ(places(in("ada/missing")), QStringList{"Home"}) << "opens there";
}

TEST_F(FolderPanels, buttonsHaveNoIcons) {
  show(folder_.path(), [] {
    EXPECT_TRUE(buttonTitled("Choose").icon().isNull());
    EXPECT_TRUE(buttonTitled("Cancel").icon().isNull());
    cancel();
  });
}

TEST_F(FolderPanels, trailingSlashIsRemoved) {
  EXPECT_EQ(show(folder_.path().string() + "/", choose), folder_.path());
}

TEST_F(FolderPanels, listedFolderCanBeChosen) {
  for (const char* const name : {"Photos", "a \"quoted\" one", "50% #1?&; \\ ~", "☁ é", " spaces "})
    make(name);
  for (const char* const name :
       {"Photos", "a \"quoted\" one", "50% #1?&; \\ ~", "☁ é", " spaces "}) {
    EXPECT_EQ(show(folder_.path(),
                   [&] {
                     listed(5);
                     select(name);
                     choose();
                   }),
              in(name));
  }
}

TEST_F(FolderPanels, pathCanBeTyped) {
  make("one/two");
  make("one/.hidden/deeper");
  for (const std::string name : {"one", "one/two", "one/.hidden", "one/.hidden/deeper"}) {
    for (const bool whole : {true, false}) {
      EXPECT_EQ(show(folder_.path(),
                     [&] {
                       listed(1);
                       type(whole ? in(name) : name);
                       choose();
                     }),
                in(name))
          << whole;
    }
  }
  EXPECT_EQ(show(in("one"),
                 [&] {
                   type(in("one/.hidden/"));
                   choose();
                 }),
            in("one/.hidden"))
      << "hidden below the folder that is listed";
}

TEST_F(FolderPanels, tildeStandsForHome) {
  const ScopedVariable home("HOME", make("home"));
  make("home/Documents");
  EXPECT_EQ(show(folder_.path(), typed("~")), in("home"));
  EXPECT_EQ(show(folder_.path(), typed("~/Documents")), in("home/Documents"));
  make("~");
  EXPECT_EQ(show(folder_.path(), typed("~")), in("~"));
}

TEST_F(FolderPanels, nameFieldDecides) {
  make("one");
  make("two");
  EXPECT_EQ(show(folder_.path(),
                 [&] {
                   listed(2);
                   select("one");
                   EXPECT_EQ(nameField().text(), "one");
                   EXPECT_TRUE(isSelected("one"));
                   nameField().setFocus();
                   nameField().setText("two");
                   choose();
                 }),
            in("two"));
  EXPECT_EQ(show(folder_.path(),
                 [&] {
                   listed(2);
                   select("one");
                   nameField().setFocus();
                   nameField().clear();
                   EXPECT_FALSE(isSelected("one"));
                   choose();
                 }),
            folder_.path());
}

TEST_F(FolderPanels, enteredFolderCanBeChosen) {
  make("one/two");
  EXPECT_EQ(show(folder_.path(),
                 [&] {
                   listed(1);
                   select("one");
                   auto& view = part<QTreeView>("treeView");
                   view.setFocus();
                   pressKey(Qt::Key_Return);
                   EXPECT_EQ(openPanel()->directory().path().toStdString(), in("one"));
                   choose();
                 }),
            in("one"));
}

TEST_F(FolderPanels, onlyFoldersCanBeChosen) {
  folder_.write("file", "");
  EXPECT_EQ(show(folder_.path(),
                 [&] {
                   for (const std::string& path : {in("file"), in("missing"), in("file/below")}) {
                     nameField().clear();
                     type(path);
                     EXPECT_FALSE(buttonTitled("Choose").isEnabled()) << path;
                   }
                   cancel();
                 }),
            std::nullopt);
}

TEST_F(FolderPanels, keysChooseAndCancel) {
  make("inside");
  EXPECT_EQ(show(folder_.path(), [] { pressKey(Qt::Key_Return); }), folder_.path());
  EXPECT_EQ(show(folder_.path(), [] { pressKey(Qt::Key_Enter); }), folder_.path());
  EXPECT_EQ(show(folder_.path(), [] { pressKey(Qt::Key_Escape); }), std::nullopt);
  EXPECT_EQ(show(folder_.path(),
                 [&] {
                   nameField().setText(QString::fromStdString(in("inside")));
                   pressKey(Qt::Key_Return);
                 }),
            in("inside"));
}

TEST_F(FolderPanels, closedOrCancelledPanelGivesNoFolder) {
  EXPECT_EQ(show(folder_.path(), cancel), std::nullopt);
  EXPECT_EQ(show(folder_.path(), [] { openPanel()->close(); }), std::nullopt);
}

TEST_F(FolderPanels, missingFolderOpensParent) {
  EXPECT_EQ(show(in("missing/below"), choose), folder_.path());
  EXPECT_EQ(show("", choose), "/");
}

TEST_F(FolderPanels, folderWithInvalidNameOpensParent) {
  EXPECT_EQ(show(make("caf\xe9"), choose), folder_.path());
  make("readable");
  EXPECT_EQ(show(make("caf\xe9/below"),
                 [] {
                   EXPECT_EQ(listed(1), QStringList{"readable"})
                       << "the other folder cannot be shown";
                   choose();
                 }),
            folder_.path());
}

TEST_F(FolderPanels, panelSavesAndChangesNothing) {
  const std::string home = make("home");
  const ScopedVariable homeVariable("HOME", home);
  const ScopedVariable configuration("XDG_CONFIG_HOME", home + "/.config");
  make("drive/folder");
  show(in("drive"), [&] {
    listed(1);
    select("folder");
    auto& view = part<QTreeView>("treeView");
    view.setFocus();
    for (const int key : {Qt::Key_F2, Qt::Key_Delete}) {
      pressKey(key);
      EXPECT_EQ(openPanel()->focusWidget(), &view) << key;
    }
    choose();
  });
  EXPECT_TRUE(fs::is_empty(home));
  EXPECT_TRUE(fs::is_directory(in("drive/folder")));
}

TEST_F(FolderPanels, partsHaveAccessibleNames) {
  show(folder_.path(), [] {
    const auto name = [](const char* object) {
      return QAccessible::queryAccessibleInterface(&part<QWidget>(object))
          ->text(QAccessible::Name)
          .remove('&')
          .toStdString();
    };
    EXPECT_EQ(name("treeView"), "Folders");
    EXPECT_EQ(name("sidebar"), "Places");
    EXPECT_EQ(name("fileNameEdit"), "Folder:");
    for (const char* const button : {"backButton", "forwardButton", "toParentButton"})
      EXPECT_NE(name(button), "") << button;
    cancel();
  });
}

TEST_F(FolderPanels, partsAreInsideWindowAndFit) {
  for (const char* const name : {"Desktop", "Documents", "Letters", "Photos", "Music"})
    make(name);
  show(folder_.path(), [] {
    listed(5);
    EXPECT_TRUE(openPanel()->screen()->availableGeometry().contains(openPanel()->geometry()));
    const QRect window = openPanel()->rect();
    int bottom = 0;
    for (const char* const name :
         {"message", "lookInCombo", "splitter", "fileNameEdit", "buttonBox"}) {
      const auto& widget = part<QWidget>(name);
      const QRect place(widget.mapTo(openPanel(), QPoint()), widget.size());
      EXPECT_TRUE(window.contains(place)) << name;
      EXPECT_GT(place.top(), bottom) << name;
      bottom = place.bottom();
    }
    const auto& message = part<QLabel>("message");
    EXPECT_GE(message.height(), message.heightForWidth(message.width()));
    photograph("folder-panel");
    cancel();
  });
}

/// Renames every object when it gets a name, as another release of Qt may.
class Renaming : public QObject {
public:
  Renaming() { qApp->installEventFilter(this); }

  bool eventFilter(QObject* /*watched*/, QEvent* event) override {
    if (event->type() == QEvent::ChildAdded) {
      QObject* const child = static_cast<QChildEvent*>(event)->child();
      connect(child, &QObject::objectNameChanged, this, [child](const QString& name) {
        if (!name.endsWith("Renamed"))
          child->setObjectName(name + "Renamed");
      });
    }
    return false;
  }
};

TEST_F(FolderPanels, partsAreFoundWhateverQtCallsThem) {
  make("inside");
  const Renaming renaming;
  const auto show = [this](const std::function<void()>& answer) {
    QTimer::singleShot(0, &context_, [answer] {
      answer();
      if (openPanel() != nullptr)
        openPanel()->close();
    });
    return dialogs_.chooseFolder(panel(folder_.path()));
  };
  EXPECT_EQ(show([] {
              EXPECT_EQ(openPanel()->findChild<QLineEdit*>("fileNameEdit"), nullptr);
              EXPECT_FALSE(openPanel()->findChild<QTreeView*>()->isColumnHidden(0));
              EXPECT_TRUE(openPanel()->findChild<QTreeView*>()->isColumnHidden(1));
              openPanel()->findChild<QLineEdit*>()->setText("inside");
              choose();
            }),
            in("inside"));
  EXPECT_EQ(show([] {
              openPanel()->findChild<QLineEdit*>()->setText("missing");
              EXPECT_FALSE(buttonTitled("Choose").isEnabled());
            }),
            std::nullopt);
}

TEST_F(FolderPanels, onlyUsefulPartsAreVisible) {
  show(folder_.path(), [] {
    for (const char* const name : {"fileTypeLabel", "fileTypeCombo", "newFolderButton",
                                   "listModeButton", "detailModeButton"})
      EXPECT_FALSE(part<QWidget>(name).isVisible()) << name;
    for (const char* const name : {"backButton", "forwardButton", "toParentButton", "lookInCombo",
                                   "fileNameLabel", "fileNameEdit", "buttonBox", "sidebar"})
      EXPECT_TRUE(part<QWidget>(name).isVisible()) << name;
    cancel();
  });
}

TEST_F(FolderPanels, mainQueueRunsWhilePanelIsOpen) {
  LinuxMainQueue queue;
  std::string order;
  queue.async([&] {
    const auto chosen = dialogs_.chooseFolder(panel(folder_.path()));
    order += chosen == folder_.path() ? "chosen" : "other";
  });
  queue.async([&] { order += "task "; });
  queue.after(Seconds(0.01), [&] {
    order += "later ";
    choose();
  });
  EXPECT_TRUE(runUntil([&] { return order.ends_with("chosen") || order.ends_with("other"); }));
  EXPECT_EQ(order, "task later chosen");
}

TEST_F(FolderPanels, applicationExitClosesPanel) {
  LinuxMainQueue queue;
  std::optional<std::string> answer = "none yet";
  queue.async([&] { answer = dialogs_.chooseFolder(panel(folder_.path())); });
  queue.async([] { QCoreApplication::exit(); });
  QCoreApplication::exec();
  EXPECT_EQ(answer, std::nullopt);
}

TEST_F(FolderPanels, panelAfterApplicationQuitGivesNoFolder) {
  LinuxMainQueue queue;
  std::optional<std::string> answer = "none yet";
  queue.async([&] {
    QCoreApplication::quit();
    answer = dialogs_.chooseFolder(panel(folder_.path()));
  });
  QCoreApplication::exec();
  EXPECT_EQ(answer, std::nullopt);
}

} // namespace
} // namespace driftmark::test
