# Builds zig's C++ library for the target and links every program with it. Its debug information names
# the folder of the compiler, so it is left out.
set(runtime ${CMAKE_BINARY_DIR}/cxx-runtime)
set(runtime_libraries ${runtime}/libc++.a ${runtime}/libc++abi.a ${runtime}/libcompiler_rt.a)
if(NOT EXISTS ${runtime}/libcompiler_rt.a)
  message(STATUS "Building the C++ library for ${CMAKE_SYSTEM_PROCESSOR}")
  file(WRITE ${runtime}/main.cpp "int main() {}\n")
  separate_arguments(arguments UNIX_COMMAND "${CMAKE_CXX_COMPILER_ARG1}")
  execute_process(
    COMMAND ${CMAKE_COMMAND} -E env ZIG_VERBOSE_LINK=1
            ${CMAKE_CXX_COMPILER} ${arguments} -O3 -o ${runtime}/main ${runtime}/main.cpp
    ERROR_VARIABLE link_line RESULT_VARIABLE status)
  foreach(name [[c\+\+]] [[c\+\+abi]] compiler_rt)
    if(NOT status EQUAL 0 OR NOT link_line MATCHES "[^ ]+/lib${name}\\.a")
      message(FATAL_ERROR "zig did not link a program:\n${link_line}")
    endif()
    file(COPY ${CMAKE_MATCH_0} DESTINATION ${runtime})
  endforeach()
  execute_process(COMMAND ${CMAKE_STRIP} -S ${runtime_libraries} RESULT_VARIABLE status)
  if(NOT status EQUAL 0)
    file(REMOVE_RECURSE ${runtime})
    message(FATAL_ERROR "the C++ library cannot be stripped: ${status}")
  endif()
endif()
list(JOIN runtime_libraries " " CMAKE_CXX_STANDARD_LIBRARIES)
string(APPEND CMAKE_CXX_STANDARD_LIBRARIES " -lSystem")
set(CMAKE_OBJCXX_STANDARD_LIBRARIES ${CMAKE_CXX_STANDARD_LIBRARIES})
