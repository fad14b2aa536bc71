# The client looks for its files in Contents/Resources beside the executable, or of its bundle. They are our art, and
# the display's font as arial.ttf. Arial may not be shipped; Liberation Sans has its metrics.
find_file(VANTOR_FONT LiberationSans-Regular.ttf
  PATHS /usr/share/fonts /Library/Fonts $ENV{HOME}/Library/Fonts
  PATH_SUFFIXES truetype/liberation2 truetype/liberation liberation-sans-fonts
  DOC "the font of the display's texts")
if(NOT VANTOR_FONT)
  message(FATAL_ERROR "no LiberationSans-Regular.ttf: install fonts-liberation2${VANTOR_PACKAGE_HINT}")
endif()
file(GLOB art CONFIGURE_DEPENDS
  ${PROJECT_SOURCE_DIR}/Resources/*.png ${PROJECT_SOURCE_DIR}/Resources/*.obj)
if(NOT VANTOR_CONTENTS)
  set(VANTOR_CONTENTS ${VANTOR_PROGRAMS}/Contents)
endif()

# Each copy is an output of its own: a build restores a deleted one.
function(copy_resource source name)
  set(copy ${VANTOR_CONTENTS}/Resources/${name})
  add_custom_command(OUTPUT ${copy}
    COMMAND ${CMAKE_COMMAND} -E copy ${source} ${copy}
    DEPENDS ${source} COMMENT "Copying ${name}" VERBATIM)
  set_property(GLOBAL APPEND PROPERTY vantor_resources ${copy})
endfunction()

foreach(file IN LISTS art)
  cmake_path(GET file FILENAME name)
  copy_resource(${file} ${name})
endforeach()
copy_resource(${VANTOR_FONT} arial.ttf)
get_property(copies GLOBAL PROPERTY vantor_resources)
add_custom_target(vantor_resources ALL DEPENDS ${copies})
add_dependencies(vantor vantor_resources)
