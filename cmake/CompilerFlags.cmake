# Flags per target. They touch no global state: a parent project's own flags stay as they are.
include_guard()
set(VANTOR_SANITIZERS "" CACHE STRING "sanitizers to build with, as in -fsanitize=...")

# vantor_harden(<target>): hardening for every optimised build. Sanitizers check more, and fortified calls hide some
# errors from them.
function(vantor_harden target)
  if(VANTOR_SANITIZERS)
    return()
  endif()
  set(optimised $<CONFIG:Release,RelWithDebInfo,MinSizeRel>)
  target_compile_options(${target} PRIVATE
    $<${optimised}:-fstack-protector-strong>
    $<${optimised}:-U_FORTIFY_SOURCE> $<${optimised}:-D_FORTIFY_SOURCE=2>  # some compilers set another level
    $<${optimised}:-D_GLIBCXX_ASSERTIONS>)                                 # checks indices of containers
  if(NOT APPLE)  # whose linker has neither option
    target_link_options(${target} PRIVATE $<${optimised}:LINKER:-z,relro,-z,now>)
  endif()
endfunction()

# vantor_flags(<target>): our language level, warnings, hardening, and the sanitizers that the preset asks for.
function(vantor_flags target)
  target_compile_features(${target} PUBLIC cxx_std_17)
  # A parent project need not share our compiler: there a warning is no error.
  set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF COMPILE_WARNING_AS_ERROR ${PROJECT_IS_TOP_LEVEL})
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
  vantor_harden(${target})
  if(VANTOR_SANITIZERS)
    target_compile_options(${target} PUBLIC
      -fsanitize=${VANTOR_SANITIZERS} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    # The checks that the sanitizers insert make gcc see uninitialised variables inside the standard library.
    target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
    if(VANTOR_SANITIZERS MATCHES thread)
      # Asio's headers contain a memory fence, which the sanitizer does not see. Our code shares data under mutexes.
      target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-tsan>)
    endif()
    target_link_options(${target} PUBLIC -fsanitize=${VANTOR_SANITIZERS})
  endif()
endfunction()

# vantor_sources(<target> <files...>): its sources and its headers, which are included from the root.
function(vantor_sources target)
  set(headers ${ARGN})
  list(FILTER headers INCLUDE REGEX "\\.h$")
  set(sources ${ARGN})
  list(FILTER sources EXCLUDE REGEX "\\.h$")
  target_sources(${target} PRIVATE ${sources}
    PUBLIC FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR} FILES ${headers})
endfunction()

# vantor_library(<target> FILES <files...> LIBRARIES <targets...>): a static library of one folder.
function(vantor_library target)
  cmake_parse_arguments(ARG "" "" "FILES;LIBRARIES" ${ARGN})
  add_library(${target} STATIC)
  vantor_sources(${target} ${ARG_FILES})
  vantor_flags(${target})
  target_link_libraries(${target} PUBLIC ${ARG_LIBRARIES})
endfunction()

# vantor_program(<target> FILES <files...> LIBRARIES <targets...>): a program beside the client.
function(vantor_program target)
  cmake_parse_arguments(ARG "" "" "FILES;LIBRARIES" ${ARGN})
  add_executable(${target} ${ARG_FILES})
  vantor_flags(${target})
  target_link_libraries(${target} PRIVATE ${ARG_LIBRARIES})
  set_target_properties(${target} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${VANTOR_PROGRAMS})
endfunction()

# vantor_messages(<target> <schema>): a static library of the message classes generated from <schema>.proto.
function(vantor_messages target schema)
  set(generated ${PROJECT_BINARY_DIR}/generated)
  cmake_path(GET schema PARENT_PATH folder)
  file(MAKE_DIRECTORY ${generated}/${folder})
  add_custom_command(
    OUTPUT ${generated}/${schema}.pb.cc ${generated}/${schema}.pb.h
    COMMAND protobuf::protoc --proto_path=${PROJECT_SOURCE_DIR} --cpp_out=${generated}
            ${PROJECT_SOURCE_DIR}/${schema}.proto
    DEPENDS ${PROJECT_SOURCE_DIR}/${schema}.proto
    COMMENT "Generating ${schema}.pb.h"
    VERBATIM)
  add_library(${target} STATIC ${generated}/${schema}.pb.cc ${generated}/${schema}.pb.h)
  target_compile_features(${target} PUBLIC cxx_std_17)
  target_include_directories(${target} SYSTEM PUBLIC ${generated})
  target_compile_options(${target} PRIVATE -w)  # not our code: whatever the warnings, they are not ours to mend
  vantor_harden(${target})
  target_link_libraries(${target} PUBLIC protobuf::libprotobuf)
endfunction()
