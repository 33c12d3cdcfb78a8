// Files are shown and opened by the desktop.

#include "desktop/BrctlScript.h"
#include "desktop/Calls.h"
#include "desktop/FileManager.h"
#include "desktop/Session.h"
#include "harness/BuiltFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

using icloud::Window;
using testing::ElementsAre;
using testing::StartsWith;

class Workspace : public testing::Test {
protected:
  Workspace() { session_.writeTool("/usr/bin/xdg-open", opened_.script()); }

  RunningProgram reveal(const std::string& path) {
    return session_.start(desktopSubject(), {path});
  }

  Session session_;
  Calls opened_{session_.folder() / "opened"};
};

struct Name {
  const char* path;
  const char* url;
};

class NamesInTheWorkspace : public Workspace, public testing::WithParamInterface<Name> {};

TEST_P(NamesInTheWorkspace, areShownByTheFileManager) {
  FileManager fileManager(session_.openBus());
  const RunningProgram program = reveal(GetParam().path);
  EXPECT_THAT(fileManager.next(), ElementsAre(QString(GetParam().url)));
}

INSTANTIATE_TEST_SUITE_P(
    Names, NamesInTheWorkspace,
    testing::Values(Name{"/drive/plain.txt", "file:///drive/plain.txt"},
                    Name{"/drive/two  spaces .txt", "file:///drive/two%20%20spaces%20.txt"},
                    Name{"/drive/50%20off%.txt", "file:///drive/50%2520off%25.txt"},
                    Name{"/drive/a#b?c;d&e=f,g.txt", "file:///drive/a%23b%3Fc%3Bd%26e%3Df%2Cg.txt"},
                    Name{"/Grüße/日本.txt", "file:///Gr%C3%BC%C3%9Fe/%E6%97%A5%E6%9C%AC.txt"},
                    Name{"/drive/\xff\xfe\x80.txt", "file:///drive/%FF%FE%80.txt"},
                    Name{"/drive/'\"\\$(x)`y`.txt", "file:///drive/%27%22%5C%24%28x%29%60y%60.txt"},
                    Name{"/drive/-two\nlines", "file:///drive/-two%0Alines"}));

TEST_F(Workspace, theFolderIsOpenedWhereTheBusKnowsNoFileManager) {
  session_.openBus();
  const RunningProgram program = reveal("/some folder/100%/a.txt");
  EXPECT_THAT(opened_.next(), ElementsAre("/some folder/100%"));
}

TEST_F(Workspace, theFolderIsOpenedWhereTheFileManagerRefuses) {
  FileManager fileManager(session_.openBus());
  fileManager.refuse();
  const RunningProgram program = reveal("/some folder/a.txt");
  EXPECT_THAT(fileManager.next(), ElementsAre(QString("file:///some%20folder/a.txt")));
  EXPECT_THAT(opened_.next(), ElementsAre("/some folder"));
}

/// The program itself, with a file that has just been synchronised.
class WorkspaceOfTheProgram : public Workspace {
protected:
  WorkspaceOfTheProgram() {
    session_.writeTool("/usr/bin/brctl", brctlUploading("Papers/a b.txt", "45"));
  }

  void start() {
    program_.emplace(session_.start());
    driver_.emplace(session_.awaitDriver());
    program_->log.readUntil("uploading a b.txt");
  }

  void choose(const std::string& entry) {
    driver_->click("MenuBarStrip");
    driver_->awaitMenu();
    driver_->choose(entry);
  }

  const std::string row_ = "a b.txt  —  uploading 45%";
  std::optional<RunningProgram> program_;
  std::optional<icloud::UiDriver> driver_;
};

TEST_F(WorkspaceOfTheProgram, isAskedByTheMenu) {
  SessionBus& bus = session_.openBus();
  FileManager fileManager(bus);
  start();
  choose(row_);
  const QString drive = "file://" + QString::fromStdString(session_.home().string()) +
                        "/Library/Mobile%20Documents/com~apple~CloudDocs";
  EXPECT_THAT(fileManager.next(), ElementsAre(drive + "/Papers/a%20b.txt"));
  choose("Open iCloud Drive");
  const std::string folder = session_.home() / "Library/Mobile Documents/com~apple~CloudDocs";
  EXPECT_THAT(opened_.next(), ElementsAre(folder));

  bus.close();
  choose(row_);
  EXPECT_THAT(opened_.next(), ElementsAre(folder + "/Papers"));
}

} // namespace
} // namespace driftmark::test
