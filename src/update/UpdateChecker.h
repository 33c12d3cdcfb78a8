#pragma once

#include "ports/HttpClient.h"
#include "ports/MainQueue.h"
#include "ports/Platform.h"
#include "ports/PlatformError.h"

#include <cstddef>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace driftmark {

struct ToolCommand;

/// Keeps the application current: asks for the update manifest soon after the start, daily and on
/// request, and installs what it names when the user agrees. One instance, held by a shared
/// pointer; all of it runs on the main thread, the tools of an install included.
class UpdateChecker : public std::enable_shared_from_this<UpdateChecker> {
  struct Private {}; ///< only `make` can pass one

public:
  /// The update manifest: what the maker says of the latest release.
  struct Manifest {
    std::string version; ///< dotted
    std::string url;     ///< of a zip archive that holds the application bundle
    std::optional<std::string> notes;

    bool operator==(const Manifest&) const = default;
  };

  /// Why an update was not installed, as far as it is the update's own fault.
  struct UpdateError {
    std::string message; ///< for the user

    /// The same as an error among others: it is described by its message.
    operator PlatformError() const { return {message}; }
  };

  /// A checker at rest. The ports in `platform` outlive it.
  static std::shared_ptr<UpdateChecker> make(const Platform& platform);
  UpdateChecker(Private pass, const Platform& platform);

  /// Schedules the automatic checks.
  void start();

  /// Asks for the manifest and offers what is newer. Does nothing while an answer is awaited. Only
  /// with `interactive`, which is for the user's own request, are the other outcomes shown.
  void check(bool interactive);

  /// Where the manifest lies: the user's setting, otherwise the maker's address. A setting that is
  /// no address ends the program.
  std::string manifestURL() const;

  /// The version of the running bundle; "0" outside a bundle.
  std::string currentVersion() const;

  /// Whether dotted version `remote` is greater than `local`. A piece that is no number counts as
  /// 0, and so does a missing one.
  static bool isNewer(std::string_view remote, std::string_view local);

  /// Reads a manifest document. Absent when it is not one.
  static std::optional<Manifest> decodeManifest(std::string_view document, const Text& text);

  static constexpr Seconds firstCheckDelay{30.0};
  static constexpr Seconds checkInterval{86400.0};
  static constexpr Seconds checkTolerance{3600.0};
  static constexpr Seconds manifestTimeout{60.0};

  /// Far more than a manifest needs, and what a hostile server can make this program hold.
  static constexpr std::size_t largestManifest = 1 << 20;

private:
  // UpdateChecker.cpp
  void log(std::initializer_list<std::string_view> parts) const;
  std::size_t activateAndAsk(const std::string& messageText, const std::string& informativeText,
                             std::vector<std::string> buttons = {}) const;
  void manifestArrived(const HttpClient::DataReply& reply, bool interactive);
  void checkFailed(const std::optional<PlatformError>& error, bool interactive) const;
  void offer(const Manifest& manifest);

  // UpdateInstall.cpp
  void download(const Manifest& manifest);
  void downloadArrived(const std::optional<std::string>& archive,
                       const std::optional<PlatformError>& error);
  std::optional<PlatformError> run(const std::string& tool, std::vector<std::string> arguments,
                                   const std::string& failure) const;
  std::optional<PlatformError> verify(const std::string& bundle) const;
  std::optional<PlatformError> install(const std::string& zip) const;
  std::optional<PlatformError> swap(const std::string& newBundle, const std::string& running,
                                    const std::string& oldCopy) const;

  const Platform platform_;
  std::unique_ptr<Timer> timer_;
  bool checking_ = false; ///< from a manifest request to the end of handling its answer
};

} // namespace driftmark
