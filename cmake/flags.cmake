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
# At -O3 g++ 12 sees copies of impossible length inside std::string where there are none: a warning there is no fault.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  target_compile_options(kapris_flags INTERFACE
    $<$<AND:$<COMPILE_LANGUAGE:CXX>,$<CONFIG:Release>>:-Wno-restrict -Wno-stringop-overflow>)
endif()
target_compile_definitions(kapris_flags INTERFACE
  $<$<CONFIG:Debug>:_GLIBCXX_ASSERTIONS>)

if(KAPRIS_SANITIZE)
  target_compile_options(kapris_flags INTERFACE
    -fsanitize=${KAPRIS_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(kapris_flags INTERFACE -fsanitize=${KAPRIS_SANITIZE})
endif()

# The run time of C++ is older than it must be, or not there, on some machines.
if(KAPRIS_PORTABLE)
  target_link_options(kapris_flags INTERFACE -static-libstdc++ -static-libgcc)
endif()

# Optimisation with the profile of an instrumented run of the same build folder; scripts/pgo goes through the steps. The
# profile is looked up by the paths of the object files, which is why both steps share one folder. Only the library is
# built that way. The names of the flags are GCC's.
if(KAPRIS_PROFILE)
  set(profile ${PROJECT_BINARY_DIR}/profile)
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    message(FATAL_ERROR "KAPRIS_PROFILE needs g++, not ${CMAKE_CXX_COMPILER_ID}")
  endif()
  if(KAPRIS_PROFILE STREQUAL "generate")
    set(KAPRIS_PROFILE_OPTIONS -fprofile-generate=${profile})
    target_link_options(kapris_flags INTERFACE -fprofile-generate=${profile})
  elseif(NOT KAPRIS_PROFILE STREQUAL "use")
    message(FATAL_ERROR "KAPRIS_PROFILE is '${KAPRIS_PROFILE}', not generate or use")
  elseif(NOT EXISTS ${profile})
    message(FATAL_ERROR "there is no ${profile}: run scripts/pgo, which makes it and builds with it")
  else()
    set(KAPRIS_PROFILE_OPTIONS -fprofile-use=${profile} -fprofile-partial-training -Wno-missing-profile)
  endif()
endif()

option(KAPRIS_COVERAGE "Count which lines and branches run, for gcov" OFF)
if(KAPRIS_COVERAGE)
  target_compile_options(kapris_flags INTERFACE --coverage -fprofile-update=atomic)
  target_link_options(kapris_flags INTERFACE --coverage)
endif()
