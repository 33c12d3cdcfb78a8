#pragma once

#include <array>
#include <string_view>

namespace icloud {

/// What a client can ask the daemon for.
inline constexpr std::string_view itemsRequest = "items";
inline constexpr std::string_view globalRequest = "global";
inline constexpr std::string_view statusRequest = "status";
inline constexpr std::string_view quotaRequest = "quota";

inline constexpr std::string_view evictRequest = "evict";       ///< and an absolute path
inline constexpr std::string_view downloadRequest = "download"; ///< and an absolute path

/// Those that only ask how things stand.
inline constexpr std::array requestNames{itemsRequest, globalRequest, statusRequest, quotaRequest};

} // namespace icloud
