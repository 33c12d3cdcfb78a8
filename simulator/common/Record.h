#pragma once

#include <cstddef>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace icloud {

/// What `bird` and its clients send each other: a list of fields, any bytes in each. On the wire a
/// field is its length in decimal digits, a colon and its bytes; a newline ends the record.
using Record = std::vector<std::string>;

/// Appends the wire form of a record to `out`.
void appendRecord(std::string& out, std::initializer_list<std::string_view> fields);

/// Cuts received bytes into records.
class RecordReader {
public:
  void append(std::string_view bytes);

  /// The next whole record, or nothing before more bytes come. Throws std::runtime_error when the
  /// bytes are not records.
  std::optional<Record> next();

private:
  std::optional<std::string> nextField(std::size_t& position) const;

  std::string buffer_;
  std::size_t consumed_ = 0;
};

} // namespace icloud
