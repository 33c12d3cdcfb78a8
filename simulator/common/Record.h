#pragma once

#include <cstddef>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace icloud {

/// A message between `bird` and its clients: a list of fields with any bytes. On the wire a field
/// is its length in decimal digits, a colon and its bytes; a newline ends the record.
using Record = std::vector<std::string>;

/// Appends the wire form of a record to `out`.
void appendRecord(std::string& out, std::initializer_list<std::string_view> fields);

/// Splits received bytes into records.
class RecordReader {
public:
  void append(std::string_view bytes);

  /// The next complete record, or nothing until more bytes arrive. Throws std::runtime_error when
  /// the bytes are not records.
  std::optional<Record> next();

private:
  std::optional<std::string> nextField(std::size_t& position) const;

  std::string buffer_;
  std::size_t consumed_ = 0;
};

} // namespace icloud
