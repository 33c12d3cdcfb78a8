#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace driftmark {

/// Receives the launch and the end of the application. Both calls come on the main thread.
class ApplicationDelegate {
public:
  virtual ~ApplicationDelegate() = default;

  /// The application runs. It may already be asked to terminate in this call.
  virtual void applicationDidFinishLaunching() = 0;

  /// The application is about to end, for whatever reason. Called once at most.
  virtual void applicationWillTerminate() = 0;
};

/// Something that the program does for the user now. Destroying it ends that. Main thread only.
class Activity {
public:
  virtual ~Activity() = default;
};

/// The running application. Main thread only.
class Application {
public:
  virtual ~Application() = default;

  /// Makes this a program without an icon among the running applications and without a menu bar.
  virtual void becomeAccessory() = 0;

  /// Sets who receives the launch and the end from now on; null for nobody. The delegate outlives
  /// the run.
  virtual void setDelegate(ApplicationDelegate* delegate) = 0;

  /// Runs the application. Returns when it has ended, or never where the system ends the process
  /// itself.
  virtual void run() = 0;

  /// Activates the application, whatever other application is active.
  virtual void activateIgnoringOtherApplications() = 0;

  /// Asks for the orderly end. Returns at once, so the caller continues first; asking again is
  /// harmless. Modal windows close, and `run` ends after that.
  virtual void terminate() = 0;

  /// Whether `terminate` was called: nothing new is to be started any more.
  virtual bool isTerminating() const = 0;

  /// Begins an activity: until it ends, the system treats this process as one in use, although it
  /// is in the background and draws little. Its timers are in time and its threads keep their
  /// priority; the machine may still sleep. Activities may overlap. A system that slows no process
  /// down does nothing. Never null. `reason` is shown by tools that inspect the system.
  virtual std::unique_ptr<Activity> beginActivity(const std::string& reason) = 0;

  /// The identifier of this process.
  virtual std::int32_t processIdentifier() const = 0;
};

} // namespace driftmark
