# The client looks for its files in Contents/Resources beside the executable, or of its bundle: our art, and the
# display's font under the name that the client asks for. Arial may not be shipped; Liberation Sans has its metrics.
find_file(VANTOR_FONT LiberationSans-Regular.ttf
  PATHS /usr/share/fonts /Library/Fonts $ENV{HOME}/Library/Fonts
  PATH_SUFFIXES truetype/liberation2 truetype/liberation liberation-sans-fonts
  DOC "the font of the display's texts")
if(NOT VANTOR_FONT)
  message(FATAL_ERROR "no LiberationSans-Regular.ttf: install fonts-liberation2${VANTOR_PACKAGES}")
endif()

file(GLOB art CONFIGURE_DEPENDS
  ${PROJECT_SOURCE_DIR}/Resources/*.png ${PROJECT_SOURCE_DIR}/Resources/*.obj)
if(NOT VANTOR_CONTENTS)
  set(VANTOR_CONTENTS ${CMAKE_CURRENT_BINARY_DIR}/Contents)
endif()
set(resource_folder ${VANTOR_CONTENTS}/Resources)
set(resource_stamp ${CMAKE_CURRENT_BINARY_DIR}/resources.stamp)
add_custom_command(
  OUTPUT ${resource_stamp}
  COMMAND ${CMAKE_COMMAND} -E make_directory ${resource_folder}
  COMMAND ${CMAKE_COMMAND} -E copy_if_different ${art} ${resource_folder}
  COMMAND ${CMAKE_COMMAND} -E copy_if_different ${VANTOR_FONT} ${resource_folder}/arial.ttf
  COMMAND ${CMAKE_COMMAND} -E touch ${resource_stamp}
  DEPENDS ${art} ${VANTOR_FONT}
  COMMENT "Copying resources"
  VERBATIM)
add_custom_target(vantor_resources ALL DEPENDS ${resource_stamp})
set_target_properties(vantor PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR})
add_dependencies(vantor vantor_resources)
