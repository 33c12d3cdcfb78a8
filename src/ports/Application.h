#pragma once

#include <cstdint>

namespace driftmark {

/// Hears of the launch and the end of the application. Both are called on the main thread.
class ApplicationDelegate {
public:
  virtual ~ApplicationDelegate() = default;

  /// The application runs. It may be asked to terminate here already.
  virtual void applicationDidFinishLaunching() = 0;

  /// The application is about to end, for whatever reason. Called once at most.
  virtual void applicationWillTerminate() = 0;
};

/// The running application. Main thread only.
class Application {
public:
  virtual ~Application() = default;

  /// The application has no icon among the running ones and no menu of its own.
  virtual void becomeAccessory() = 0;

  /// Whom the application tells from now on; null for nobody. The delegate outlives the run.
  virtual void setDelegate(ApplicationDelegate* delegate) = 0;

  /// Runs the application. Returns when it has ended, or not at all where the system ends the
  /// process there.
  virtual void run() = 0;

  /// Brings the application to the front, whatever other application is active.
  virtual void activateIgnoringOtherApplications() = 0;

  /// Asks for the orderly end. The caller goes on first, and may ask again.
  virtual void terminate() = 0;

  /// The identifier of this process.
  virtual std::int32_t processIdentifier() const = 0;
};

} // namespace driftmark
