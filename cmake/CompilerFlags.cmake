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
  set_target_properties(${target} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR})
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
  target_link_libraries(${target} PUBLIC protobuf::libprotobuf)
endfunction()
