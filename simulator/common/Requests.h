#pragma once

#include <array>
#include <string_view>

namespace icloud {

/// The requests of a client, as the first field of its record.
inline constexpr std::string_view itemsRequest = "items";
inline constexpr std::string_view globalRequest = "global";
inline constexpr std::string_view statusRequest = "status";
inline constexpr std::string_view quotaRequest = "quota";

inline constexpr std::string_view evictRequest = "evict";       ///< and an absolute path
inline constexpr std::string_view downloadRequest = "download"; ///< and an absolute path

/// The requests that change nothing.
inline constexpr std::array requestNames{itemsRequest, globalRequest, statusRequest, quotaRequest};

} // namespace icloud
