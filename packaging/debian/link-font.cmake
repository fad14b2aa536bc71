# CPack runs this on the files of a package: Debian's brings no font, but links to that of fonts-liberation2.
if(CPACK_GENERATOR STREQUAL DEB)
  set(root ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/usr/share)
  file(REMOVE ${root}/doc/vantor/copyright.arial.ttf)
  file(CREATE_LINK ../../../fonts/truetype/liberation2/LiberationSans-Regular.ttf
    ${root}/games/vantor/Resources/arial.ttf SYMBOLIC)
endif()
