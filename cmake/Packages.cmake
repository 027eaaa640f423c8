# cpack -G DEB in the build of the preset "package": three binary packages, one per component of the installation.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "zorvcrt maintainers <maintainers@zorvcrt.invalid>")
set(CPACK_PACKAGE_VENDOR zorvcrt)
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_COMPONENTS_ALL library development tools)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/lib)
# What Debian asks of a package and cpack does not do by itself.
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/packaging/complete.cmake)
set(CPACK_POST_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/packaging/finish.cmake)

set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each description begins with its own
set(about "Settings with privileged, group and user levels, logging, JSON documents,
dates, conversions and encodings, and a thin layer over threads, processes,
sockets and files, as plain C functions that stand on libc and libm alone.")

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME libzorvcrt-core2)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA
  ${PROJECT_SOURCE_DIR}/packaging/symbols ${PROJECT_SOURCE_DIR}/packaging/triggers)
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION "run-time support layer of a database server
${about}

This package contains the shared library.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libzorvcrt-core-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "libzorvcrt-core2 (= ${PROJECT_VERSION}), libc6-dev")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "run-time support layer of a database server - development files
${about}

This package contains the headers, the static library, the CMake package and
the pkg-config file, the reference, the guides and the examples.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME zorvcrt-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION database)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "libzorvcrt-core2 (>= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_TOOLS_DESCRIPTION "companion command of the zorvcrt run-time library
The command zorvcrt shows settings and where they come from, tidies JSON,
reads dates, writes log lines and tries out sockets and processes, through
the library that a database server stands on.")

include(CPack)
