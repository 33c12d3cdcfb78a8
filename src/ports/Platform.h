#pragma once

namespace driftmark {

class Application;
class BackgroundQueue;
class Bundle;
class ChildProcesses;
class Clock;
class CloudFiles;
class Dialogs;
class Environment;
class FileSystem;
class HttpClient;
class LoginItem;
class MainQueue;
class RunningApplications;
class Signals;
class StatusBar;
class SystemLog;
class SystemText;
class UserDefaults;
class Workspace;

/// The ports that the core works through. The frontend that makes the core keeps the adapters alive
/// for as long as anything of the core exists.
struct Platform {
  Clock& clock;
  MainQueue& mainQueue;
  BackgroundQueue& backgroundQueue;
  ChildProcesses& childProcesses;
  SystemLog& systemLog;
  FileSystem& fileSystem;
  Environment& environment;
  SystemText& text;
  HttpClient& httpClient;
  Dialogs& dialogs;
  UserDefaults& userDefaults;
  Bundle& bundle;
  Application& application;
  RunningApplications& runningApplications;
  Signals& signals;
  StatusBar& statusBar;
  Workspace& workspace;
  LoginItem& loginItem;
  CloudFiles& cloudFiles;
};

} // namespace driftmark
