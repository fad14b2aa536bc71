# The client as an application bundle of macOS, for Intel processors: sets `vantor` up and says where its resources go.
include_guard()
enable_language(OBJC)

add_executable(vantor MACOSX_BUNDLE
  GUIClient/macos/MenuBar.h GUIClient/macos/MenuBar.m GUIClient/macos/main.m)
set_target_properties(vantor PROPERTIES
  OUTPUT_NAME Vantor  # the application's name, too
  MACOSX_BUNDLE_INFO_PLIST ${PROJECT_SOURCE_DIR}/GUIClient/macos/Info.plist.in)
target_link_libraries(vantor PRIVATE "-framework Cocoa")
set(VANTOR_CONTENTS ${VANTOR_PROGRAMS}/Vantor.app/Contents)

target_link_libraries(vantor_core PUBLIC "-framework CoreFoundation")
target_compile_definitions(vantor_core PUBLIC GL_SILENCE_DEPRECATION)  # OpenGL is what the client draws with
