// How "Free Up Space…" runs: the user chooses a folder, it is surveyed in the background, the user
// confirms, its files are evicted in the background, a report is shown. Each step passes its
// results to the next and keeps nothing on the controller, so that several runs can be under way at
// once.

#include "evict/Evictor.h"
#include "monitor/SyncMonitor.h"
#include "ports/Application.h"
#include "ports/BackgroundQueue.h"
#include "ports/Dialogs.h"
#include "ports/MainQueue.h"
#include "ports/SystemText.h"
#include "support/Log.h"
#include "support/Paths.h"
#include "ui/StatusItemController.h"

#include <utility>

namespace driftmark {

namespace {

constexpr std::size_t removeDownloads = 0; ///< the index of the button
constexpr const char* cloudDriveName = "iCloud Drive";

Alert nothingToFree(const std::string& name) {
  return {"Nothing to Free in " + name, "No downloaded iCloud files were found there.", {}};
}

/// The survey does not know which files are not yet uploaded: the system refuses to evict them.
Alert question(const std::string& name, std::size_t files, const std::string& size) {
  return {"Remove Downloads in " + name + "?",
          std::to_string(files) + " files using " + size +
              " on this Mac will be removed from local storage. They stay in iCloud and download "
              "again when opened. Files not yet uploaded are left alone.",
          {"Remove Downloads", "Cancel"}};
}

Alert report(std::size_t files, std::size_t failures, const std::string& size) {
  std::string text = std::string("iCloud is removing ").append(std::to_string(files - failures));
  if (failures == 0)
    text += " downloads (" + size + "). Space is freed as each file is evicted.";
  else
    text += " downloads; " + std::to_string(failures) + " could not be evicted (see the log).";
  return {"Freeing Up Space", std::move(text), {}};
}

} // namespace

/// Runs `work` on a background thread and `then`, with its result, on the main thread. Without a
/// thread the run ends here.
template <class Work, class Then> void StatusItemController::inBackground(Work work, Then then) {
  const auto error = platform_.backgroundQueue.async(
      QualityOfService::userInitiated,
      [self = shared_from_this(), work = std::move(work), then = std::move(then)]() mutable {
        auto result = std::make_shared<decltype(work(*self))>(work(*self));
        MainQueue& mainQueue = self->platform_.mainQueue;
        // This thread releases the controller here, so that it is destroyed on the main thread.
        mainQueue.async([self = std::move(self), result = std::move(result),
                         then = std::move(then)] { then(*self, std::move(*result)); });
      });
  if (error)
    log(platform_.systemLog, {"freeing up space failed: ", error->description});
}

void StatusItemController::freeUpSpace() {
  platform_.application.activateIgnoringOtherApplications();
  const auto folder = platform_.dialogs.chooseFolder(
      {.title = "Free Up Space",
       .message = "Choose a folder. Downloaded files inside it will be removed from this Mac; they "
                  "stay in iCloud and download again when opened.",
       .prompt = "Choose",
       .directory = SyncMonitor::cloudDocsPath(platform_.fileSystem),
       .directoryName = cloudDriveName});
  if (!folder)
    return;
  inBackground(
      [folder = *folder](StatusItemController& self) {
        return Evictor::survey(self.platform_.cloudFiles, folder);
      },
      [folder = *folder](StatusItemController& self, Evictor::Survey survey) {
        self.confirmEviction(std::move(survey), folder);
      });
}

void StatusItemController::confirmEviction(Evictor::Survey survey, const std::string& folder) {
  const std::string name = folder == SyncMonitor::cloudDocsPath(platform_.fileSystem)
                               ? cloudDriveName
                               : std::string(lastPathComponent(folder));
  if (survey.files.empty()) {
    platform_.dialogs.runModal(nothingToFree(name));
    return;
  }
  const std::size_t count = survey.files.size();
  const std::string size = platform_.text.byteCount(survey.bytes);
  if (platform_.dialogs.runModal(question(name, count, size)) != removeDownloads) {
    // Releasing a million paths takes long enough to block the main thread.
    static_cast<void>(platform_.backgroundQueue.async(QualityOfService::utility,
                                                      [files = std::move(survey.files)] {}));
    return;
  }
  log(platform_.systemLog,
      {"evicting ", std::to_string(count), " files (", size, ") under ", folder});
  inBackground(
      [files = std::move(survey.files)](StatusItemController& self) {
        return Evictor::evict(self.platform_.cloudFiles, self.platform_.systemLog, files).size();
      },
      [count, size](StatusItemController& self, std::size_t failures) {
        self.platform_.dialogs.runModal(report(count, failures, size));
      });
}

} // namespace driftmark
