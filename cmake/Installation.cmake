# What cmake --install lays down, in three components that are the three packages: library (to run hosts),
# development (to build them; all that names no component) and tools (the companion command).
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME development)

get_property(headers GLOBAL PROPERTY ZORVCRT_HEADERS)
install(FILES ${headers} ${PROJECT_SOURCE_DIR}/include/zorvcrt.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/zorvcrt)
install(TARGETS zorvcrt_core zorvcrt_core_static EXPORT zorvcrt_core
  LIBRARY COMPONENT library NAMELINK_COMPONENT development
  ARCHIVE COMPONENT development)

# find_package(zorvcrt_core 2 CONFIG) gives zorvcrt::core and zorvcrt::core_static; pkg-config knows zorvcrt_core.
include(CMakePackageConfigHelpers)
set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/zorvcrt_core)
set_target_properties(zorvcrt_core PROPERTIES EXPORT_NAME core)
set_target_properties(zorvcrt_core_static PROPERTIES EXPORT_NAME core_static)
install(EXPORT zorvcrt_core NAMESPACE zorvcrt:: FILE zorvcrt_core-config.cmake DESTINATION ${package_folder})
set(made ${PROJECT_BINARY_DIR}/installation)
write_basic_package_version_file(${made}/zorvcrt_core-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${made}/zorvcrt_core-config-version.cmake DESTINATION ${package_folder})
# Relative to itself, so that an installation can be moved.
set(pkgconfig_folder ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH includedir_from_pkgconfig ${pkgconfig_folder} ${CMAKE_INSTALL_FULL_INCLUDEDIR}/zorvcrt)
configure_file(${PROJECT_SOURCE_DIR}/cmake/zorvcrt_core.pc.in ${made}/zorvcrt_core.pc @ONLY)
install(FILES ${made}/zorvcrt_core.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

if(TARGET zorvcrt)
  file(RELATIVE_PATH libdir_from_bindir ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
  set_target_properties(zorvcrt PROPERTIES INSTALL_RPATH $ORIGIN/${libdir_from_bindir})
  install(TARGETS zorvcrt COMPONENT tools)
  file(GLOB pages CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/docs/man/*.1)
  install(FILES ${pages} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
  if(EXISTS ${PROJECT_SOURCE_DIR}/tools/completion/zorvcrt.bash)
    install(FILES ${PROJECT_SOURCE_DIR}/tools/completion/zorvcrt.bash RENAME zorvcrt
      DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT tools)
  endif()
endif()

# Guides and examples, laid out as in the project, so that the links between them lead somewhere.
foreach(page README CHANGELOG SECURITY)
  install(FILES ${PROJECT_SOURCE_DIR}/${page}.md DESTINATION ${CMAKE_INSTALL_DOCDIR} OPTIONAL)
endforeach()
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs DESTINATION ${CMAKE_INSTALL_DOCDIR}
  FILES_MATCHING PATTERN *.md PATTERN *.svg PATTERN man EXCLUDE)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples DESTINATION ${CMAKE_INSTALL_DOCDIR}
  PATTERN CMakeLists.txt EXCLUDE PATTERN __pycache__ EXCLUDE)
