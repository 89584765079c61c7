# Install tree and CMake package: find_package(KZMBasShared) offers KZMBas::Shared and the siblings.
include(CMakePackageConfigHelpers)

get_property(installed GLOBAL PROPERTY kzm_installed_targets)
install(TARGETS ${installed} EXPORT KZMBasSharedTargets
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
foreach(sibling coreutils generics alloc host)
  install(DIRECTORY siblings/${sibling}/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
endforeach()

include(cmake/KzmDebugger.cmake)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/KZMBasShared)
install(EXPORT KZMBasSharedTargets NAMESPACE KZMBas:: DESTINATION ${package_dir})
configure_package_config_file(cmake/KZMBasSharedConfig.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/KZMBasSharedConfig.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/KZMBasSharedConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES
  ${CMAKE_CURRENT_BINARY_DIR}/KZMBasSharedConfig.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/KZMBasSharedConfigVersion.cmake DESTINATION ${package_dir})
