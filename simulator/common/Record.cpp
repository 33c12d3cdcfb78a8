// The wire format between `bird` and its clients.
#include "common/Record.h"

#include <charconv>
#include <stdexcept>

namespace icloud {
namespace {

constexpr std::size_t maxFieldLength = std::size_t{64} << 20;
constexpr std::size_t maxDigits = 10;

} // namespace

void appendRecord(std::string& out, std::initializer_list<std::string_view> fields) {
  for (const std::string_view field : fields) {
    out += std::to_string(field.size());
    out += ':';
    out += field;
  }
  out += '\n';
}

void RecordReader::append(std::string_view bytes) {
  if (consumed_ > buffer_.size() / 2) {
    buffer_.erase(0, consumed_);
    consumed_ = 0;
  }
  buffer_ += bytes;
}

std::optional<std::string> RecordReader::nextField(std::size_t& position) const {
  const std::size_t colon = buffer_.find(':', position);
  if (colon == std::string::npos) {
    if (buffer_.size() - position > maxDigits)
      throw std::runtime_error("a field without a length");
    return std::nullopt;
  }
  std::size_t length = 0;
  const char* first = buffer_.data() + position;
  const char* last = buffer_.data() + colon;
  const auto parsed = std::from_chars(first, last, length);
  if (first == last || parsed.ec != std::errc{} || parsed.ptr != last || length > maxFieldLength)
    throw std::runtime_error("a field with a bad length");
  if (buffer_.size() - (colon + 1) < length)
    return std::nullopt;
  position = colon + 1 + length;
  return buffer_.substr(colon + 1, length);
}

std::optional<Record> RecordReader::next() {
  Record record;
  std::size_t position = consumed_;
  while (position < buffer_.size()) {
    if (buffer_[position] == '\n') {
      consumed_ = position + 1;
      return record;
    }
    auto field = nextField(position);
    if (!field)
      return std::nullopt;
    record.push_back(std::move(*field));
  }
  return std::nullopt;
}

} // namespace icloud
