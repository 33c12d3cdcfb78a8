#pragma once

#include "ports/HttpClient.h"
#include "ports/MainQueue.h"
#include "ports/Platform.h"
#include "ports/PlatformError.h"
#include "support/DisplayedText.h"

#include <cstddef>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace driftmark {

struct Manifest;

/// Keeps the application current: fetches the update manifest soon after the start, daily and on
/// request, and installs the release that it names when the user agrees. One instance, held by a
/// shared pointer; all of it runs on the main thread, the tools of an install included.
class UpdateChecker : public std::enable_shared_from_this<UpdateChecker> {
  struct Private {}; ///< only `make` can pass one

public:
  /// Why an update was not installed, when the update itself is at fault.
  struct UpdateError {
    std::string message; ///< for the user

    /// An error of the system that this message describes.
    operator PlatformError() const { return {message}; }
  };

  /// Makes a checker that schedules nothing yet. The ports in `platform` outlive it.
  static std::shared_ptr<UpdateChecker> make(const Platform& platform);
  UpdateChecker(Private pass, const Platform& platform);

  /// Schedules the automatic checks. They show nothing while an alert of this object is open.
  void start();

  /// Fetches the manifest and offers a newer release. Does nothing while a reply is pending. The
  /// other outcomes are shown only with `interactive`, that is when the user asked for the check.
  void check(bool interactive);

  /// The URL of the manifest: the user's setting, otherwise the vendor's. A setting that is no URL
  /// ends the program.
  std::string manifestURL() const;

  /// The version of the running bundle; "0" outside a bundle.
  std::string currentVersion() const;

  static constexpr Seconds firstCheckDelay{30.0};
  static constexpr Seconds checkInterval{86400.0};
  static constexpr Seconds checkTolerance{3600.0};
  static constexpr Seconds manifestTimeout{60.0};
  static constexpr Seconds maxManifestDuration{300.0};

  // What an alert and the log show of texts from outside, in user-perceived characters
  static constexpr std::size_t maxVersionCharacters = 64;
  static constexpr std::size_t maxNotesCharacters = 20'000;
  static constexpr std::size_t maxErrorCharacters = 1000;

private:
  // UpdateChecker.cpp
  void log(std::initializer_list<std::string_view> parts) const;
  std::optional<std::size_t> activateAndAsk(const std::string& messageText,
                                            const std::string& informativeText,
                                            std::vector<std::string> buttons = {});
  void showFailure(const std::string& messageText, const std::string& error);
  std::string shown(std::string_view text, LineBreaks lineBreaks, std::size_t maxCharacters) const;
  void manifestArrived(const std::variant<HttpClient::Body, PlatformError>& reply,
                       bool interactive);
  void checkFailed(const std::string& reason, const std::string& details, bool interactive);
  void offer(const Manifest& manifest, bool interactive);

  // UpdateInstall.cpp
  void download(const Manifest& manifest);
  void downloadArrived(const std::variant<std::string, PlatformError>& archive);
  std::optional<PlatformError> run(const std::string& tool, std::vector<std::string> arguments,
                                   const std::string& failure) const;
  std::optional<PlatformError> verify(const std::string& bundle) const;
  std::optional<PlatformError> install(const std::string& zip) const;
  std::optional<PlatformError> swap(const std::string& newBundle, const std::string& running,
                                    const std::string& oldCopy) const;

  const Platform platform_;
  std::unique_ptr<Timer> timer_;
  bool checking_ = false; ///< from sending a manifest request until its reply is handled
  int openAlerts_ = 0;
};

} // namespace driftmark
