#include "bird/OperationLog.h"

#include "common/Record.h"
#include "common/SystemFailure.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

#include <fcntl.h>
#include <unistd.h>

namespace icloud {
namespace {

constexpr const char* evictionKind = "eviction";
constexpr const char* downloadKind = "download";

std::string textOf(const ClientOperation& act) {
  std::string text;
  appendRecord(text, {act.kind == ClientOperation::Kind::eviction ? evictionKind : downloadKind,
                      act.path, std::to_string(act.restarts), std::to_string(act.next),
                      std::to_string(act.at.count())});
  return text;
}

ClientOperation actOf(const Record& record) {
  const bool isDownload = record.at(0) == downloadKind;
  if (!isDownload && record[0] != evictionKind)
    throw std::runtime_error(record[0]);
  return {isDownload ? ClientOperation::Kind::download : ClientOperation::Kind::eviction,
          record.at(1), std::stoull(record.at(2)), std::stoull(record.at(3)),
          Milliseconds(std::stoll(record.at(4)))};
}

} // namespace

OperationLog::OperationLog(std::filesystem::path file)
    : file_(std::move(file)),
      descriptor_(open(file_.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644)) {
  if (!descriptor_)
    throwSystemFailure("cannot open " + file_.string());
}

void OperationLog::clear() {
  if (ftruncate(descriptor_.get(), 0) != 0)
    throwSystemFailure("cannot empty " + file_.string());
}

std::deque<ClientOperation> OperationLog::read() {
  std::ifstream stream(file_, std::ios::binary);
  RecordReader reader;
  reader.append(std::string{std::istreambuf_iterator<char>(stream), {}});
  std::deque<ClientOperation> acts;
  std::size_t length = 0;
  try {
    while (const auto record = reader.next()) {
      acts.push_back(actOf(*record));
      length += textOf(acts.back()).size();
    }
  } catch (const std::exception&) {
    throw std::runtime_error("not a list of acts: " + file_.string());
  }
  if (ftruncate(descriptor_.get(), static_cast<off_t>(length)) != 0)
    throwSystemFailure("cannot shorten " + file_.string());
  return acts;
}

void OperationLog::add(const ClientOperation& act) {
  const std::string text = textOf(act);
  const off_t before = lseek(descriptor_.get(), 0, SEEK_END);
  if (write(descriptor_.get(), text.data(), text.size()) == static_cast<ssize_t>(text.size()))
    return;
  const int problem = errno;
  if (before < 0 || ftruncate(descriptor_.get(), before) != 0)
    throwSystemFailure("cannot mend " + file_.string());
  throwSystemFailure("cannot write " + file_.string(), problem);
}

} // namespace icloud
