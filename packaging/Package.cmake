# The Debian package and the archive: `cpack` in the build folder, or tools/package, which also judges them.
set(CPACK_GENERATOR DEB TGZ)
set(CPACK_PACKAGE_NAME vantor)
set(CPACK_PACKAGE_CONTACT "Vantor maintainers <maintainers@users.noreply.c-seed-a1cb4d5c.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "team-based 3D space-combat game")
set(CPACK_PACKAGE_DESCRIPTION
"Fly a fighter of the red or the blue team: against computer pilots on your
own machine, or on a server with others. The package brings the client, a
practice server, and a relay that spoils, records and replays the network
between them.")
set(CPACK_RESOURCE_FILE_README ${PROJECT_SOURCE_DIR}/README.md)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_FILE_NAME vantor-${PROJECT_VERSION}-${CMAKE_SYSTEM_NAME}-${CMAKE_SYSTEM_PROCESSOR})
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_SOURCE_DIR}/debian/link-font.cmake)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS ${CMAKE_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS})

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SECTION games)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "fonts-liberation2, libgl1")  # SDL loads libGL only when it opens the window
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "xwayland, zenity | x11-utils")  # errors in a window, where there is no terminal
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
include(CPack)
