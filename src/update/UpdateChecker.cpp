// When updates are checked for, and how the outcomes are shown.

#include "update/UpdateChecker.h"

#include "ports/Application.h"
#include "ports/Bundle.h"
#include "ports/Dialogs.h"
#include "ports/SystemText.h"
#include "ports/UserDefaults.h"
#include "support/Log.h"
#include "support/Weakly.h"
#include "update/Manifest.h"
#include "update/Version.h"

#include <utility>

namespace driftmark {

namespace {

/// The vendor chooses the host at build time; the path is fixed.
constexpr const char* vendorManifestURL =
    "https://" DRIFTMARK_VENDOR_HOST "/driftmark/appcast.json";

constexpr std::size_t installAndRelaunch = 0; ///< the index of the button

} // namespace

std::shared_ptr<UpdateChecker> UpdateChecker::make(const Platform& platform) {
  return std::make_shared<UpdateChecker>(Private{}, platform);
}

UpdateChecker::UpdateChecker(Private /*pass*/, const Platform& platform) : platform_(platform) {}

std::string UpdateChecker::manifestURL() const {
  std::string url = platform_.userDefaults.string("UpdateManifestURL").value_or(vendorManifestURL);
  if (!platform_.text.isUrl(url))
    fatalError("the setting UpdateManifestURL is not an address");
  return url;
}

std::string UpdateChecker::currentVersion() const {
  return platform_.bundle.information("CFBundleShortVersionString").value_or("0");
}

void UpdateChecker::start() {
  const auto automaticCheck =
      weakly(shared_from_this(), [](UpdateChecker& self) { self.check(/*interactive=*/false); });
  platform_.mainQueue.after(firstCheckDelay, automaticCheck);
  timer_ = platform_.mainQueue.repeat(checkInterval, checkTolerance, automaticCheck);
}

void UpdateChecker::check(bool interactive) {
  if (checking_)
    return;
  checking_ = true;
  const HttpClient::Request request{
      .url = manifestURL(),
      .cachePolicy = HttpClient::CachePolicy::reloadIgnoringLocalCacheData,
      .timeoutInterval = manifestTimeout,
      .maxDuration = maxManifestDuration,
  };
  auto deliver = weakly(shared_from_this(), [interactive](UpdateChecker& self, const auto& reply) {
    self.manifestArrived(reply, interactive);
  });
  platform_.httpClient.fetch(
      request, maxManifestSize, [&mainQueue = platform_.mainQueue, deliver](auto reply) {
        mainQueue.async([deliver, reply = std::move(reply)] { deliver(reply); });
      });
}

void UpdateChecker::manifestArrived(const std::variant<HttpClient::Body, PlatformError>& reply,
                                    bool interactive) {
  checking_ = false;
  if (const auto* const error = std::get_if<PlatformError>(&reply)) {
    checkFailed(error->description, error->description, interactive);
    return;
  }
  const auto manifest = decodeManifest(std::get<HttpClient::Body>(reply).bytes, platform_.text);
  if (!manifest) {
    checkFailed("unreadable manifest", "The update information was unreadable.", interactive);
    return;
  }

  const std::string current = currentVersion();
  if (isNewer(manifest->version, current)) {
    offer(*manifest, interactive);
    return;
  }
  log({"up to date (", current, ")"});
  if (interactive)
    activateAndAsk("Driftmark is up to date", "Version " + current + " is the latest.");
}

/// `reason` is for the log, `details` for the user.
void UpdateChecker::checkFailed(const std::string& reason, const std::string& details,
                                bool interactive) {
  log({"update check failed: ", shown(reason, LineBreaks::stay, maxErrorCharacters)});
  if (interactive)
    showFailure("Could not check for updates", details);
}

void UpdateChecker::offer(const Manifest& manifest, bool interactive) {
  const std::string current = currentVersion();
  const std::string version =
      shown(manifest.version, LineBreaks::becomeSpaces, maxVersionCharacters);
  log({"update ", version, " available (running ", current, ")"});
  if (!interactive && openAlerts_ > 0)
    return;
  const std::string notes =
      shown(manifest.notes.value_or(""), LineBreaks::stay, maxNotesCharacters);
  std::string details = "You have " + current + ".";
  if (!notes.empty())
    details += "\n\n" + notes;
  const auto answer = activateAndAsk("Driftmark " + version + " is available", details,
                                     {"Install and Relaunch", "Later"});
  if (answer == installAndRelaunch)
    download(manifest);
}

void UpdateChecker::showFailure(const std::string& messageText, const std::string& error) {
  activateAndAsk(messageText, shown(error, LineBreaks::stay, maxErrorCharacters));
}

/// What an alert and the log show of a text from outside.
std::string UpdateChecker::shown(std::string_view text, LineBreaks lineBreaks,
                                 std::size_t maxCharacters) const {
  // One character can have any number of marks. No writing needs as many on the average.
  constexpr std::size_t maxCodePointsPerCharacter = 8;
  return platform_.text.firstCharacters(
      displayedText(text, lineBreaks, maxCodePointsPerCharacter * maxCharacters), maxCharacters);
}

void UpdateChecker::log(std::initializer_list<std::string_view> parts) const {
  driftmark::log(platform_.systemLog, parts);
}

/// Shows an alert in front of all applications. Returns the index of the chosen button, if any.
std::optional<std::size_t> UpdateChecker::activateAndAsk(const std::string& messageText,
                                                         const std::string& informativeText,
                                                         std::vector<std::string> buttons) {
  platform_.application.activateIgnoringOtherApplications();
  ++openAlerts_;
  const auto answer =
      platform_.dialogs.runModal({messageText, informativeText, std::move(buttons)});
  --openAlerts_;
  return answer;
}

} // namespace driftmark
