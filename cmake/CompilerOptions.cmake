# The options of every target, behind one interface library.
add_library(kestrivane_options INTERFACE)
target_include_directories(kestrivane_options INTERFACE ${CMAKE_SOURCE_DIR})
target_compile_options(kestrivane_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor
  -Woverloaded-virtual -Wimplicit-fallthrough -Werror)

find_package(Threads REQUIRED)
target_link_libraries(kestrivane_options INTERFACE Threads::Threads)

set(KESTRIVANE_SANITIZER "" CACHE STRING "address, thread or fuzzer; empty for none")
if(KESTRIVANE_SANITIZER STREQUAL "address")
  set(sanitizers address,undefined)
elseif(KESTRIVANE_SANITIZER STREQUAL "thread")
  set(sanitizers thread)
elseif(KESTRIVANE_SANITIZER STREQUAL "fuzzer")
  include(Fuzzing)
elseif(KESTRIVANE_SANITIZER)
  message(FATAL_ERROR
    "KESTRIVANE_SANITIZER is '${KESTRIVANE_SANITIZER}', not address, thread or fuzzer.")
endif()
if(sanitizers)
  # -O1 keeps the instrumented suites quick; frame pointers and line numbers keep their reports
  # readable. GCC 12 takes its own instrumentation for uses of uninitialised values. Several files are
  # compiled together, in half of the time; the other builds see that each can be compiled alone.
  set(CMAKE_UNITY_BUILD ON)
  set(CMAKE_UNITY_BUILD_BATCH_SIZE 12)
  add_compile_options(-O1 -g1)
  target_compile_options(kestrivane_options INTERFACE
    -fsanitize=${sanitizers} -fno-sanitize-recover=all -fno-omit-frame-pointer
    $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>
    # It is meant for headers, and takes files that are compiled together for such.
    $<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>
    # clang 14 cannot check the types of called functions where there are coroutines.
    $<$<CXX_COMPILER_ID:Clang>:-fno-sanitize=function>)
  target_link_options(kestrivane_options INTERFACE -fsanitize=${sanitizers})
endif()
