# Compiles macOS sources for macOS with clang, against the declarations in sdk/; the C++ and C libraries
# are those of this machine. The objects are only looked at.

# With the warnings of every build.
get_target_property(warnings kestrivane_options INTERFACE_COMPILE_OPTIONS)
list(FILTER warnings INCLUDE REGEX "^-W")
list(FILTER warnings EXCLUDE REGEX "maybe-uninitialized")
set(compile_options --target=x86_64-apple-macosx13.0 -std=c++20 -fblocks ${warnings})
execute_process(COMMAND clang++ -dumpversion OUTPUT_VARIABLE clang_version COMMAND_ERROR_IS_FATAL ANY)
if(clang_version VERSION_LESS 17)
  # It has coroutines but does not say so in the way that GCC's library asks.
  list(APPEND compile_options -D__cpp_impl_coroutine=201902L)
endif()
list(APPEND compile_options
  # The macOS target takes this name for itself, which the C library here needs, and leaves out that.
  -U__nonnull -D_GNU_SOURCE
  -nostdinc++ -I${CMAKE_SOURCE_DIR} -isystem ${CMAKE_CURRENT_SOURCE_DIR}/sdk)
foreach(folder IN LISTS CMAKE_CXX_IMPLICIT_INCLUDE_DIRECTORIES)
  # Not the headers that belong to the compiler: clang has its own.
  if(NOT folder MATCHES "/gcc/")
    list(APPEND compile_options -isystem ${folder})
  endif()
endforeach()

# Adds the test that compiles `source`, a path from the root of the project, into `object`, for tests
# that require the fixture macos_objects: a .mm file is Objective-C++ with ARC, a .cpp file is C++, as
# in the build on macOS.
function(add_type_check source object)
  if(source MATCHES "\\.mm$")
    set(language -x objective-c++ -fobjc-arc)
  else()
    set(language -x c++)
  endif()
  add_test(NAME type_check.${source}
    COMMAND clang++ ${language} ${compile_options} -c -o ${object} ${CMAKE_SOURCE_DIR}/${source})
  set_tests_properties(type_check.${source} PROPERTIES FIXTURES_SETUP macos_objects PROCESSORS 2)
endfunction()
