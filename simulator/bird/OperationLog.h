#pragma once

#include "bird/ClientOperation.h"
#include "common/Descriptor.h"

#include <deque>
#include <filesystem>

namespace icloud {

/// The file with what clients changed, in its order. An act is added without touching those before,
/// so that many cost no more each than a few. Throws std::runtime_error.
class OperationLog {
public:
  /// Opens the file or makes it; its folder is there.
  explicit OperationLog(std::filesystem::path file);

  void clear();

  /// Everything that was added. The rest of an act that was half written is taken away.
  std::deque<ClientOperation> read();

  void add(const ClientOperation& act);

private:
  std::filesystem::path file_;
  Descriptor descriptor_;
};

} // namespace icloud
