#pragma once

#include <memory>
#include <stdexcept>
#include <string>

#include <archive.h>
#include <archive_entry.h>

namespace icloud {

struct FreeReader {
  void operator()(archive* reader) const { archive_read_free(reader); }
};
struct FreeWriter {
  void operator()(archive* writer) const { archive_write_free(writer); }
};
struct FreeEntry {
  void operator()(archive_entry* entry) const { archive_entry_free(entry); }
};

using Reader = std::unique_ptr<archive, FreeReader>;
using Writer = std::unique_ptr<archive, FreeWriter>;
using Entry = std::unique_ptr<archive_entry, FreeEntry>;

/// Throws the error of an archive; `name` is the file or entry in question.
[[noreturn]] inline void throwArchiveFailure(archive* failed, const std::string& name) {
  const char* text = archive_error_string(failed);
  throw std::runtime_error(name + ": " + (text != nullptr ? text : "unknown failure"));
}

} // namespace icloud
