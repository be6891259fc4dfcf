# With -O3, GCC 12 inlines so far that its analysis warns about the standard library's own code.
set(CMAKE_CXX_FLAGS_RELEASE "-O2 -DNDEBUG")

# The warnings and sanitizers that every target of the product is compiled with.
add_library(rdv_warnings INTERFACE)
target_compile_options(rdv_warnings INTERFACE
  -Wall -Wextra -Wconversion -Wsign-conversion -Wshadow -Wold-style-cast -Wnon-virtual-dtor
  -Woverloaded-virtual -Wcast-align -Wformat=2 -Wimplicit-fallthrough -Werror
  # GCC 12 sees overlaps in std::string's own insertions, and unset members in moved variants, that
  # are not there; both checks follow what was inlined.
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
  $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)

if(WIN32)
  # A library that hosts load by itself must not need a compiler's runtime beside it.
  add_link_options(-static -static-libgcc -static-libstdc++)
  add_compile_definitions(UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN _WIN32_WINNT=0x0A00)
endif()

if(RDV_SANITIZE)
  # Not optimised: this tree is compiled more often than it is waited for. Lines are all the reports need.
  add_compile_options(-O0 -g1 -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()

if(RDV_FUZZ)
  add_compile_definitions(_GLIBCXX_ASSERTIONS)
  add_compile_options(-O1 -g1 -fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()
