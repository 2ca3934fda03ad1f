# add_module(TARGET NAME SOURCE...): a library that programs load when they first need what it links,
# see platform/linux/system/ModuleFunction.hpp. It lies with the auxiliary executables as NAME.so.
function(add_module target name)
  add_library(${target} MODULE ${CMAKE_SOURCE_DIR}/platform/linux/system/ModuleVersion.cpp ${ARGN})
  target_compile_definitions(${target} PRIVATE KESTRIVANE_VERSION="${PROJECT_VERSION}")
  set_target_properties(${target} PROPERTIES
    PREFIX "" OUTPUT_NAME ${name}
    LIBRARY_OUTPUT_DIRECTORY ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/../libexec/kestrivane)
  # Nothing but the entry is offered, so that nothing can stand in for what the program has itself.
  target_link_options(${target} PRIVATE LINKER:--exclude-libs,ALL)
  install(TARGETS ${target} DESTINATION libexec/kestrivane)
endfunction()
