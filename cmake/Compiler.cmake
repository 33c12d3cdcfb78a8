# One place for the language level and the warnings of every target.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_OBJCXX_STANDARD 20)
set(CMAKE_OBJCXX_STANDARD_REQUIRED ON)
set(CMAKE_OBJCXX_EXTENSIONS OFF)
find_package(Threads REQUIRED)

add_library(driftmark_compiler INTERFACE)
target_compile_options(driftmark_compiler INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wold-style-cast -Wnon-virtual-dtor
  -Woverloaded-virtual -Wimplicit-fallthrough -Werror
  -fno-omit-frame-pointer)
target_compile_definitions(driftmark_compiler INTERFACE
  $<$<NOT:$<CONFIG:Release>>:_GLIBCXX_ASSERTIONS>)
if(APPLE)
  # A binary and its debug information do not depend on the folder that it was built in, nor on that
  # of the compiler's headers. It exports nothing.
  file(REAL_PATH ${CMAKE_SOURCE_DIR}/tools/macos/node_modules tools)
  add_compile_options(-g -fdebug-compilation-dir=.
                      -ffile-prefix-map=${tools}/=tools/macos/node_modules/
                      -ffile-prefix-map=${CMAKE_SOURCE_DIR}/=
                      -fvisibility=hidden -fvisibility-inlines-hidden)
  # Apple's headers state of every pointer whether it may be null; ours do not.
  target_compile_options(driftmark_compiler INTERFACE
    $<$<COMPILE_LANGUAGE:OBJCXX>:-fobjc-arc -Wno-nullability-completeness>)
endif()

set(DRIFTMARK_SANITIZE "" CACHE STRING "Sanitizers to build with, as -fsanitize takes them")
if(DRIFTMARK_SANITIZE)
  add_compile_options(-fsanitize=${DRIFTMARK_SANITIZE} -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${DRIFTMARK_SANITIZE})
  add_compile_definitions(DRIFTMARK_SANITIZED)
endif()
