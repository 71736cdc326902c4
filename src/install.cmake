include(CMakePackageConfigHelpers)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/Kelvo)

install(TARGETS kelvo kelvo_static EXPORT KelvoTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT KelvoTargets NAMESPACE Kelvo:: FILE KelvoTargets.cmake DESTINATION ${package_dir})

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/KelvoConfig.cmake.in KelvoConfig.cmake
  INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(KelvoConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/KelvoConfig.cmake ${CMAKE_CURRENT_BINARY_DIR}/KelvoConfigVersion.cmake
  DESTINATION ${package_dir})

configure_file(${PROJECT_SOURCE_DIR}/cmake/kelvo.pc.in kelvo.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/kelvo.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
