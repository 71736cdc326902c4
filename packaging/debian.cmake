# The program as a Debian package: cpack, in the build folder. The library is installed by cmake --install.
find_program(GZIP gzip REQUIRED)
set(doc_dir ${CMAKE_INSTALL_DATADIR}/doc/kelvo)
configure_file(${CMAKE_CURRENT_LIST_DIR}/debian-changelog.in changelog @ONLY)
add_custom_command(OUTPUT changelog.gz
  COMMAND ${GZIP} -9nkf changelog
  DEPENDS ${CMAKE_CURRENT_LIST_DIR}/debian-changelog.in VERBATIM)
add_custom_target(kelvo_changelog ALL DEPENDS ${CMAKE_CURRENT_BINARY_DIR}/changelog.gz)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/changelog.gz ${CMAKE_CURRENT_LIST_DIR}/copyright
  DESTINATION ${doc_dir} COMPONENT program)
install(FILES ${PROJECT_SOURCE_DIR}/README.md DESTINATION ${doc_dir} COMPONENT program)

set(CPACK_GENERATOR DEB)
set(CPACK_COMPONENTS_ALL program)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_NAME kelvo)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "Developers of Kelvo <kelvo@users.noreply.invalid>")
set(CPACK_DEBIAN_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS fonts-dejavu-core)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "restores blurred photographs")
set(CPACK_DEBIAN_PROGRAM_DESCRIPTION
  "Kelvo restores photographs that are out of focus or blurred by a straight
 motion. It finds the blur by itself, works through folders, keeps metadata,
 colour profile and bit depth, and shows before and after side by side.")
set(CPACK_VERBATIM_VARIABLES ON)
include(CPack)
