# CPack runs this on the staged files of its packages. It adds what only Debian's packages have.
if(NOT CPACK_GENERATOR STREQUAL DEB)
  return()
endif()
set(client ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/client/usr)
set(server ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/server/usr)
set(data ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/data/usr)

# A link to the font of Debian's package instead of a copy.
file(REMOVE ${client}/share/doc/vantor/copyright.arial.ttf)
file(RELATIVE_PATH font_from_resources /usr/share/games/vantor/Resources ${CPACK_VANTOR_FONT})
file(CREATE_LINK ${font_from_resources}
  ${data}/share/games/vantor/Resources/arial.ttf SYMBOLIC)

# Each package has its copyright and changelog, ...
file(COPY ${client}/share/doc/vantor/ DESTINATION ${server}/share/doc/vantor-server)
file(COPY ${client}/share/doc/vantor/ DESTINATION ${data}/share/doc/vantor-data)

# ... and the server's its systemd unit, which starts what is below /usr.
file(COPY ${CMAKE_CURRENT_LIST_DIR}/vantor-server/vantor-server@.service
  DESTINATION ${server}/lib/systemd/system
  FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
