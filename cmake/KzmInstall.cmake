# Install tree: libraries, headers, what find_package(KZMBasShared) and pkg-config read. Component
# runtime is what programs need to run, development the rest.
include(CMakePackageConfigHelpers)
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME development)

get_property(installed GLOBAL PROPERTY kzm_installed_targets)
install(TARGETS ${installed} EXPORT KZMBasSharedTargets
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime
    NAMELINK_COMPONENT development
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
install(DIRECTORY include/ DESTINATION ${kzm_include_dir})
foreach(sibling coreutils generics alloc host)
  install(DIRECTORY siblings/${sibling}/include/ DESTINATION ${kzm_include_dir})
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

# The prefix is found from where the file lies, so that the tree can be moved.
set(pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH pkgconfig_prefix /prefix/${pkgconfig_dir} /prefix)
list(REVERSE installed)
list(TRANSFORM installed PREPEND "-l" OUTPUT_VARIABLE pkgconfig_libs)
list(JOIN pkgconfig_libs " " pkgconfig_libs)
configure_file(cmake/KZMBasShared.pc.in ${CMAKE_CURRENT_BINARY_DIR}/KZMBasShared.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/KZMBasShared.pc DESTINATION ${pkgconfig_dir})

if(MINGW)
  # The compiler's run-time DLLs, so that programs run from the install tree as it stands.
  set(runtime_dlls)
  foreach(dll libstdc++-6.dll libgcc_s_dw2-1.dll libwinpthread-1.dll)
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${dll}
      OUTPUT_VARIABLE file OUTPUT_STRIP_TRAILING_WHITESPACE)
    if(NOT IS_ABSOLUTE "${file}")
      find_file(KZM_${dll} ${dll} PATH_SUFFIXES lib bin NO_CACHE REQUIRED)
      set(file ${KZM_${dll}})
    endif()
    file(REAL_PATH ${file} file)
    list(APPEND runtime_dlls ${file})
  endforeach()
  install(FILES ${runtime_dlls} DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)
  set(notices ${CMAKE_INSTALL_DOCDIR}/runtime-dlls)
  configure_file(cmake/runtime-dlls.txt.in ${CMAKE_CURRENT_BINARY_DIR}/README.txt @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/README.txt DESTINATION ${notices} COMPONENT runtime)
  foreach(package gcc-mingw-w64-base mingw-w64-i686-dev)
    install(FILES /usr/share/doc/${package}/copyright DESTINATION ${notices}
      RENAME ${package}.txt COMPONENT runtime OPTIONAL)
  endforeach()
endif()
