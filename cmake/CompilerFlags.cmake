# vantor_flags(<target>): our warnings, and the sanitizers that the preset asks for. A parent project's own flags
# stay as they are: nothing here touches global state, and only our own build turns warnings into errors.
include_guard()
set(VANTOR_SANITIZERS "" CACHE STRING "sanitizers to build with, as in -fsanitize=...")

function(vantor_flags target)
  target_compile_features(${target} PUBLIC cxx_std_17)
  set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF)
  target_compile_options(${target} PRIVATE
    -ffp-contract=off     # a match is the same, bit for bit, also where the processor can fuse operations
    -Wall -Wextra -Wpedantic
    -Wshadow              # a local that hides a field is usually a mistake
    -Wconversion          # narrowing must be written down ...
    -Wsign-conversion     # ... and so must a change of sign
    -Wdouble-promotion    # single precision is part of the contract of the math
    $<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast>
    -Wformat=2            # every diagnostic is printf-style
    -Wimplicit-fallthrough)
  if(PROJECT_IS_TOP_LEVEL)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
  if(VANTOR_SANITIZERS)
    target_compile_options(${target} PUBLIC
      -fsanitize=${VANTOR_SANITIZERS} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    # The checks that the sanitizers insert make gcc see uninitialised variables inside the standard library.
    target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
    target_link_options(${target} PUBLIC -fsanitize=${VANTOR_SANITIZERS})
  endif()
endfunction()
