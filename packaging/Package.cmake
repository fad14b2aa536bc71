# The Debian packages and the archive: `cpack` in the build folder, or tools/package, which also judges them.
# Each component of the installation is a Debian package. The archive holds all of them.
set(CPACK_GENERATOR DEB TGZ)
set(CPACK_COMPONENTS_ALL client server data)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_PACKAGE_NAME vantor)
set(CPACK_PACKAGE_CONTACT "Vantor maintainers <maintainers@users.noreply.c-seed-a1cb4d5c.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each package has its own
set(CPACK_RESOURCE_FILE_README ${PROJECT_SOURCE_DIR}/README.md)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_FILE_NAME vantor-${PROJECT_VERSION}-${CMAKE_SYSTEM_NAME}-${CMAKE_SYSTEM_PROCESSOR})
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_SOURCE_DIR}/debian/stage.cmake)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS ${CMAKE_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS})

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
# Debian's releases have other libraries, so each has packages of its own. The larger number replaces the smaller one.
cmake_host_system_information(RESULT distribution QUERY DISTRIB_INFO)
set(CPACK_DEBIAN_PACKAGE_RELEASE 2+deb${distribution_VERSION_ID})
set(CPACK_DEBIAN_PACKAGE_SECTION games)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(this_version "(= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")
set(single_package "vantor (<< 0.1.0-2)")  # brought the files of all three
set(game
"Fly a fighter of the red or the blue team: against computer pilots on your
own machine, or on a server with others.")

set(CPACK_DEBIAN_CLIENT_PACKAGE_NAME vantor)
set(CPACK_DEBIAN_CLIENT_DESCRIPTION "team-based 3D space-combat game
${game} The package brings the client,
and practice matches from the desktop's menu.")
set(CPACK_DEBIAN_CLIENT_PACKAGE_DEPENDS  # SDL loads libGL only when it opens the window
  "vantor-server ${this_version}, vantor-data ${this_version}, libgl1")
set(CPACK_DEBIAN_CLIENT_PACKAGE_SUGGESTS "xwayland, zenity | x11-utils")  # errors in a window, where there is no terminal

set(CPACK_DEBIAN_SERVER_PACKAGE_NAME vantor-server)
set(CPACK_DEBIAN_SERVER_DESCRIPTION "team-based 3D space-combat game: server
${game} The package brings the server,
a systemd unit that hosts matches, and a relay that impairs, records and
replays the network. It needs no desktop.")
set(CPACK_DEBIAN_SERVER_PACKAGE_SUGGESTS gnuplot-nox)  # for the plot of the measurements
set(CPACK_DEBIAN_SERVER_PACKAGE_BREAKS ${single_package})
set(CPACK_DEBIAN_SERVER_PACKAGE_REPLACES ${single_package})
set(scripts postinst prerm postrm)
list(TRANSFORM scripts PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/debian/vantor-server/)
set(CPACK_DEBIAN_SERVER_PACKAGE_CONTROL_EXTRA ${scripts})

set(CPACK_DEBIAN_DATA_PACKAGE_NAME vantor-data)
set(CPACK_DEBIAN_DATA_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_DATA_DESCRIPTION "team-based 3D space-combat game: models and pictures
${game} The package brings what the client
shows of it.")
set(CPACK_DEBIAN_DATA_PACKAGE_DEPENDS ${font_package})
set(CPACK_VANTOR_FONT ${font})  # for debian/stage.cmake
set(CPACK_DEBIAN_DATA_PACKAGE_BREAKS ${single_package})
set(CPACK_DEBIAN_DATA_PACKAGE_REPLACES ${single_package})
include(CPack)
