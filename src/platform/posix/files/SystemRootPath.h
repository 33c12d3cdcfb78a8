#pragma once

#include <string>

/// The system's application folder under a system root: a folder that stands for "/" where this
/// program names parts of the system; "" and "/" stand for none. Other paths are as they are. Any
/// thread.
namespace driftmark::system_root_path {

/// Where "/Applications" or something below it lies really.
std::string located(const std::string& root, const std::string& path);

/// The name by which this program knows the real `path`: the opposite of `located`.
std::string known(const std::string& root, const std::string& path);

} // namespace driftmark::system_root_path
