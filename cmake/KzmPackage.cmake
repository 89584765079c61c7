# Packages, made by `cpack` in the build folder: for Debian a run-time and a development package,
# for Windows one archive.
set(CPACK_PACKAGE_NAME KZMBasShared)
set(CPACK_PACKAGE_VENDOR "KZMBasShared developers")
set(CPACK_PACKAGE_CONTACT "KZMBasShared developers <kzm@example.org>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "base library of engineering simulation")
set(CPACK_COMPONENTS_ALL runtime development)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

if(WIN32)
  set(CPACK_GENERATOR ZIP)
  set(CPACK_PACKAGE_FILE_NAME KZMBasShared-${PROJECT_VERSION}-win32)
  set(CPACK_STRIP_FILES ON)
else()
  set(CPACK_GENERATOR DEB)
  set(CPACK_DEB_COMPONENT_INSTALL ON)
  set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
  set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
  set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/stage_debian.cmake)

  set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libkzmbas${kzm_interface_version})
  set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
  set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
    "Text, lists, trees and maps that copy for the price of an increment, sparse
tables keyed by node and element numbers, and process services that solvers,
pre- and post-processors share.")
  # What programs built against the libraries depend on follows from the .shlibs file.
  set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
  set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
  file(WRITE ${PROJECT_BINARY_DIR}/debian/triggers "activate-noawait ldconfig\n")
  set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/debian/triggers)
  if(KZM_DEBUG_INFO)
    set(CPACK_DEBIAN_RUNTIME_DEBUGINFO_PACKAGE ON)
  else()
    set(CPACK_STRIP_FILES ON)
  endif()

  set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libkzmbas-dev)
  set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
  set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
    "${CPACK_DEBIAN_RUNTIME_PACKAGE_NAME} (= ${PROJECT_VERSION})")
  set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
    "Development files: headers, the CMake package and the pkg-config file of the
base library that solvers, pre- and post-processors share.")
endif()
include(CPack)
