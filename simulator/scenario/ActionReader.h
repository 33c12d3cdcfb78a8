#pragma once

#include "scenario/Action.h"
#include "scenario/NumberedPath.h"
#include "scenario/ScenarioLine.h"

#include <filesystem>
#include <string>
#include <vector>

namespace icloud {

/// Reads the action of a line, which begins with its verb.
class ActionReader {
public:
  /// Paths of captures are relative to `folder`.
  explicit ActionReader(std::filesystem::path folder) : folder_(std::move(folder)) {}

  Action read(ScenarioLine& line);

  /// Reads the transfers of many files that an earlier line makes: their number, their path, their
  /// duration and options, from behind the verb.
  std::vector<Transfer> readTransfers(ScenarioLine& line, Direction direction);

private:
  Action readFileAction(const std::string& verb, ScenarioLine& line);
  Action readCloudAction(const std::string& verb, ScenarioLine& line) const;
  Action readFiles(ScenarioLine& line, bool many);
  Action readTransfer(ScenarioLine& line, Direction direction);
  Action readState(ScenarioLine& line, const char* usual) const;
  Action readReplay(ScenarioLine& line) const;
  std::string readKnownFile(ScenarioLine& line) const;

  std::filesystem::path folder_;
  KnownFiles files_;
};

/// The whole of a file. Throws std::system_error.
std::string contentsOf(const std::filesystem::path& file);

} // namespace icloud
