// How a release is downloaded, verified as the vendor's, and swapped with the running bundle.

#include "install/Relaunch.h"
#include "ports/Application.h"
#include "ports/Bundle.h"
#include "ports/ChildProcesses.h"
#include "ports/FileSystem.h"
#include "support/Paths.h"
#include "support/Utf8.h"
#include "support/Weakly.h"
#include "update/Manifest.h"
#include "update/UpdateChecker.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <string_view>
#include <utility>
#include <variant>

namespace driftmark {

namespace {

constexpr const char* codesign = "/usr/bin/codesign";
constexpr const char* ditto = "/usr/bin/ditto";
constexpr std::string_view teamKey = "TeamIdentifier=";
constexpr std::string_view adHocSignature = "Signature=adhoc";
constexpr std::string_view vendorTeam = "TeamIdentifier=T4N8RW2KQZ";

/// Moves the downloaded file to the path that it is unpacked from. That path, or why there is none.
std::variant<std::string, PlatformError>
stage(FileSystem& fileSystem, const std::variant<HttpClient::File, PlatformError>& reply) {
  if (const auto* const error = std::get_if<PlatformError>(&reply))
    return *error;
  const auto folder = fileSystem.temporaryDirectory();
  if (const auto* const error = std::get_if<PlatformError>(&folder))
    return *error;
  std::string archive = std::get<std::string>(folder) + "Driftmark-update.zip";
  static_cast<void>(fileSystem.removeItem(archive));
  if (fileSystem.moveItem(std::get<HttpClient::File>(reply).path, archive))
    return PlatformError{"Could not download the update."};
  return archive;
}

/// Whether the report of `codesign` names the vendor's team and no other. It also contains names
/// that the signer chose, such as that of the executable, line ends included. An ad hoc signature
/// has no certificate that would vouch for the team.
bool namesVendorAlone(std::string_view report) {
  bool isNamed = false;
  while (!report.empty()) {
    const std::string_view line = report.substr(0, report.find('\n'));
    report.remove_prefix(std::min(line.size() + 1, report.size()));
    const bool isVendor = line == vendorTeam;
    if (line == adHocSignature || (line.starts_with(teamKey) && !isVendor))
      return false;
    isNamed = isNamed || isVendor;
  }
  return isNamed;
}

} // namespace

void UpdateChecker::download(const Manifest& manifest) {
  // Outside a bundle the path to replace is that of a folder, with whatever else is in it.
  if (!platform_.bundle.identifier()) {
    activateAndAsk("Update failed", platform_.fileSystem.unknownWriteError().description);
    return;
  }
  auto deliver = weakly(shared_from_this(), std::mem_fn(&UpdateChecker::downloadArrived));
  platform_.httpClient.download(manifest.url, [platform = platform_, deliver](const auto& reply) {
    platform.mainQueue.async(
        [deliver, archive = stage(platform.fileSystem, reply)] { deliver(archive); });
  });
}

void UpdateChecker::downloadArrived(const std::variant<std::string, PlatformError>& archive) {
  if (const auto* const error = std::get_if<PlatformError>(&archive)) {
    showFailure("Update failed", error->description);
    return;
  }
  if (const auto failure = install(std::get<std::string>(archive)))
    showFailure("Update failed", failure->description);
}

std::optional<PlatformError> UpdateChecker::install(const std::string& zip) const {
  FileSystem& fileSystem = platform_.fileSystem;
  const auto temporary = fileSystem.temporaryDirectory();
  if (const auto* const error = std::get_if<PlatformError>(&temporary))
    return *error;
  const std::string work = std::get<std::string>(temporary) + "Driftmark-update-" +
                           std::to_string(platform_.application.processIdentifier());
  const std::string running = platform_.bundle.path();
  const std::string oldCopy = work + "/Driftmark-old.app";
  // An earlier swap failed, and the old copy could not go back.
  if (fileSystem.itemExists(oldCopy) && !fileSystem.fileExists(running + "/Contents/Info.plist"))
    return UpdateError{"The only copy of Driftmark is now at " + oldCopy +
                       ". Move it back before you update."};
  // The process that made the folder had the same identifier.
  if (fileSystem.areSameItem(deletingLastPathComponent(running), work))
    return UpdateError{"Driftmark runs from the folder that updates are unpacked in. Move " +
                       running + " elsewhere before you update."};
  // A link that an earlier archive left there would lead the next one out of the folder.
  if (auto error = fileSystem.removeItem(work); error && fileSystem.itemExists(work))
    return error;
  if (auto error = fileSystem.createDirectory(work))
    return error;
  if (auto error = run(ditto, {"-xk", zip, work}, "The update archive could not be unpacked."))
    return error;

  const std::string newBundle = work + "/Driftmark.app";
  if (!fileSystem.fileExists(newBundle))
    return UpdateError{"The update archive did not contain Driftmark.app."};
  if (auto error = verify(newBundle))
    return error;

  if (auto error = swap(newBundle, running, oldCopy))
    return error;
  log({"updated bundle at ", running, ", relaunching"});
  relaunch(platform_.childProcesses, running);
  platform_.application.terminate();
  return std::nullopt;
}

/// Only between the two moves is there no bundle at the running bundle's path.
std::optional<PlatformError> UpdateChecker::swap(const std::string& newBundle,
                                                 const std::string& running,
                                                 const std::string& oldCopy) const {
  FileSystem& fileSystem = platform_.fileSystem;
  auto moved = fileSystem.moveItemReversibly(running, oldCopy);
  if (auto* const error = std::get_if<PlatformError>(&moved))
    return std::move(*error);
  auto error = fileSystem.moveItem(newBundle, running);
  if (error)
    static_cast<void>(std::get<std::unique_ptr<MovedItem>>(moved)->putBack());
  return error;
}

std::optional<PlatformError> UpdateChecker::verify(const std::string& bundle) const {
  constexpr const char* invalid = "The update's code signature is invalid.";
  // The bundle behind a link may be any that the vendor has signed, the running one included.
  if (platform_.fileSystem.isLink(bundle))
    return UpdateError{invalid};
  if (auto error = run(codesign, {"--verify", "--deep", "--strict", bundle}, invalid))
    return error;

  const auto described =
      platform_.childProcesses.prepare({codesign, {"-dv", bundle}}, ToolOutput::captureError)
          ->run();
  if (const auto* const error = std::get_if<LaunchError>(&described))
    return PlatformError{error->description};
  const std::string& description = std::get<ToolResult>(described).output;
  if (!isUtf8(description) || !namesVendorAlone(description))
    return UpdateError{"The update was not signed by Tallowmere."};
  return std::nullopt;
}

/// Runs a tool to its end. An exit status other than 0 is the error `failure`.
std::optional<PlatformError> UpdateChecker::run(const std::string& tool,
                                                std::vector<std::string> arguments,
                                                const std::string& failure) const {
  const auto outcome =
      platform_.childProcesses.prepare({tool, std::move(arguments)}, ToolOutput::discard)->run();
  if (const auto* const error = std::get_if<LaunchError>(&outcome))
    return PlatformError{error->description};
  if (std::get<ToolResult>(outcome).exitStatus != 0)
    return UpdateError{failure};
  return std::nullopt;
}

} // namespace driftmark
