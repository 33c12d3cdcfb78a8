# Fails when a core source includes anything but the C++ standard library and the core. The core is
# every folder below SOURCE_DIR but platform/; update/ may also include nlohmann-json.
# Usage: cmake -DSOURCE_DIR=src -DFILES="a.cpp;b.h" -P CheckCoreIncludes.cmake
cmake_minimum_required(VERSION 3.25)

set(standard
  algorithm any array atomic bit bitset cctype cerrno cfloat charconv chrono cinttypes climits cmath
  compare concepts condition_variable cstddef cstdint cstdio cstdlib cstring deque exception
  filesystem forward_list fstream functional initializer_list iomanip ios iosfwd iostream istream
  iterator limits list locale map memory mutex new numbers numeric optional ostream queue random
  ranges ratio regex set span sstream stack stdexcept streambuf string string_view system_error
  thread tuple type_traits typeinfo unordered_map unordered_set utility variant vector version)

set(problems "")
foreach(file IN LISTS FILES)
  file(STRINGS "${file}" includes REGEX "^[ \t]*#[ \t]*include")
  foreach(line IN LISTS includes)
    if(line MATCHES "include[ \t]*<([^>]+)>")
      set(header "${CMAKE_MATCH_1}")
      if(header IN_LIST standard OR (header STREQUAL "nlohmann/json.hpp" AND file MATCHES "/update/"))
        continue()
      endif()
    elseif(line MATCHES "include[ \t]*\"([^\"]+)\"")
      set(header "${CMAKE_MATCH_1}")
      if(EXISTS "${SOURCE_DIR}/${header}" AND NOT header MATCHES "^platform/")
        continue()
      endif()
    endif()
    list(APPEND problems "${file}: ${line}")
  endforeach()
endforeach()

if(problems)
  list(JOIN problems "\n  " text)
  message(FATAL_ERROR "The core may include only the standard library and the core:\n  ${text}")
endif()
