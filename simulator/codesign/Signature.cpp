// How a signature is written and checked.
#include "codesign/Signature.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <nlohmann/json.hpp>

#include <QCryptographicHash>

namespace icloud {
namespace fs = std::filesystem;

namespace {

using Json = nlohmann::json;

constexpr const char* adHoc = "-";
constexpr std::size_t teamLength = 10;

std::string digestOf(const Json& covered) {
  const QByteArray bytes = QByteArray::fromStdString(covered.dump());
  return QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex().toStdString();
}

std::string teamIn(const std::string& name) {
  const auto open = name.rfind(" (");
  if (open == std::string::npos || name.size() != open + teamLength + 3 || name.back() != ')')
    return "";
  const std::string team = name.substr(open + 2, teamLength);
  const bool fits = std::all_of(team.begin(), team.end(), [](unsigned char each) {
    return std::isupper(each) != 0 || std::isdigit(each) != 0;
  });
  return fits ? team : "";
}

Signature readSignature(std::istream& stream) {
  const Json json = Json::parse(stream);
  const Json& covered = json.at("covered");
  if (json.at("digest") != digestOf(covered))
    throw SigningFailure("the digest does not match");
  return {Identity(covered.at("identity")), covered.at("identifier"),
          covered.at("contents").get<BundleContents>()};
}

} // namespace

Identity::Identity(std::string name) : name_(std::move(name)), team_(teamIn(name_)) {
  if (team_.empty() && name_ != adHoc)
    throw SigningFailure(name_ + ": no identity found");
}

std::optional<Signature> Signature::of(const fs::path& bundle) {
  const fs::path place = bundle / signaturePath;
  if (!fs::exists(fs::symlink_status(place)))
    return std::nullopt;
  try {
    if (!fs::is_regular_file(fs::symlink_status(place)))
      throw SigningFailure("the signature is no file");
    std::ifstream stream(place);
    return readSignature(stream);
  } catch (const std::exception&) {
    throw SigningFailure("invalid signature (code or signature have been modified)");
  }
}

void Signature::writeTo(const fs::path& bundle) const {
  const Json covered{
      {"identity", identity.name()}, {"identifier", identifier}, {"contents", contents}};
  const Json json{{"covered", covered}, {"digest", digestOf(covered)}};
  const fs::path place = bundle / signaturePath;
  const fs::path unfinished = place.string() + ".unfinished";
  fs::create_directories(place.parent_path());
  std::ofstream stream(unfinished, std::ios::trunc);
  stream << json.dump(2) << "\n";
  stream.close();
  if (!stream)
    throw std::runtime_error("cannot write " + unfinished.string());
  fs::rename(unfinished, place);
}

} // namespace icloud
