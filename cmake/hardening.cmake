# What is switched on in what is delivered, so that a mistake in the code ends the process instead of
# giving it to whoever wrote the file. tests/delivery/check-hardening finds each in the built files.
set(delivered $<CONFIG:Release>)
if(RDV_SANITIZE OR RDV_FUZZ)
  return()
endif()

add_compile_definitions($<${delivered}:_GLIBCXX_ASSERTIONS>)
add_compile_options(
  $<${delivered}:-fstack-protector-strong>
  $<${delivered}:-U_FORTIFY_SOURCE> $<${delivered}:-D_FORTIFY_SOURCE=3>
  # The same bytes from every folder.
  "$<${delivered}:-ffile-prefix-map=${CMAKE_SOURCE_DIR}=.>")
# For what is not optimised: checked calls need the optimiser.
set(RDV_UNCHECKED_CALLS $<${delivered}:-U_FORTIFY_SOURCE>)
add_link_options($<${delivered}:-s>)

if(WIN32)
  add_link_options(-Wl,--dynamicbase -Wl,--nxcompat -Wl,--no-insert-timestamp
    $<$<EQUAL:${CMAKE_SIZEOF_VOID_P},8>:-Wl,--high-entropy-va>)
  # Neither compiler nor linker for Windows offer control-flow protection: GCC has no guard tables,
  # and no way to mark a file for shadow stacks.
  add_library(rdv_stack_guard STATIC runtime/stack_guard/stack_guard_windows.cpp)
  target_link_libraries(rdv_stack_guard PRIVATE rdv_warnings)
  # The compiler's library has the checked calls themselves.
  link_libraries($<${delivered}:rdv_stack_guard> $<${delivered}:ssp>)
else()
  add_compile_options($<${delivered}:-fstack-clash-protection> $<${delivered}:-fcf-protection=full>)
  # Whatever is written over later, the addresses of other libraries' functions are not.
  add_link_options($<${delivered}:-Wl,-z,relro,-z,now,-z,noexecstack>)
endif()
