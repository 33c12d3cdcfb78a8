#pragma once

namespace driftmark {

class BackgroundQueue;
class ChildProcesses;
class Clock;
class Environment;
class FileSystem;
class MainQueue;
class SystemLog;
class Text;

/// The ports that the core works through. Whoever makes the core keeps what they refer to alive for
/// as long as anything of the core lives.
struct Platform {
  Clock& clock;
  MainQueue& mainQueue;
  BackgroundQueue& backgroundQueue;
  ChildProcesses& childProcesses;
  SystemLog& systemLog;
  FileSystem& fileSystem;
  Environment& environment;
  Text& text;
};

} // namespace driftmark
