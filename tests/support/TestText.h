#pragma once

#include "platform/Text.h"

#include <string>

namespace driftmark::test {

/// Texts in a fixed plain form: byte counts as "4096 bytes".
class TestText final : public Text {
public:
  std::string byteCount(std::int64_t bytes) const override {
    return std::to_string(bytes) + " bytes";
  }
};

} // namespace driftmark::test
