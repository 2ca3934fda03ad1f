# What building for libFuzzer needs beyond the sanitizers, which it shares with the other builds.
if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  message(FATAL_ERROR "libFuzzer belongs to clang; take the preset 'fuzz'.")
endif()
set(sanitizers fuzzer-no-link,address,undefined)
target_compile_definitions(kestrivane_options INTERFACE
  # clang before 17 has coroutines but does not say so in the way that GCC's library asks.
  $<$<VERSION_LESS:${CMAKE_CXX_COMPILER_VERSION},17>:__cpp_impl_coroutine=201902L>
  # Many pictures are to be tried, not large ones.
  KESTRIVANE_MAXIMUM_AREA=4194304)
