# Flags that every target of the project shares.
#
# Results are the same bits on every machine, so floating-point expressions are evaluated exactly as written:
# no fused multiply-add, no value-changing optimisation.
add_library(kapris_flags INTERFACE)
target_compile_options(kapris_flags INTERFACE
  -ffp-contract=off
  -Wall -Wextra -Wpedantic -Wshadow -Wcast-qual -Wformat=2 -Wundef -Wvla
  $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor -Woverloaded-virtual -Wextra-semi>
  $<$<BOOL:${KAPRIS_WERROR}>:-Werror>)
target_compile_definitions(kapris_flags INTERFACE
  $<$<CONFIG:Debug>:_GLIBCXX_ASSERTIONS>)

if(KAPRIS_SANITIZE)
  target_compile_options(kapris_flags INTERFACE
    -fsanitize=${KAPRIS_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(kapris_flags INTERFACE -fsanitize=${KAPRIS_SANITIZE})
endif()

option(KAPRIS_COVERAGE "Count which lines and branches run, for gcov" OFF)
if(KAPRIS_COVERAGE)
  target_compile_options(kapris_flags INTERFACE --coverage -fprofile-update=atomic)
  target_link_options(kapris_flags INTERFACE --coverage)
endif()
