# Runs in cpack, when the files of all packages are staged: what Debian asks of every package and what an ordinary
# installation does not have. Copyright and change log for each package, and compressed manual pages.
set(packages libzorvcrt-core2 libzorvcrt-core-dev zorvcrt-tools)
foreach(component package IN ZIP_LISTS CPACK_COMPONENTS_ALL packages)
  set(root ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/${component}${CPACK_PACKAGING_INSTALL_PREFIX})
  set(folder ${root}/share/doc/${package})
  file(COPY ${CMAKE_CURRENT_LIST_DIR}/copyright ${CMAKE_CURRENT_LIST_DIR}/changelog DESTINATION ${folder})
  file(GLOB pages ${root}/share/man/man*/*)
  execute_process(COMMAND gzip --best --no-name ${folder}/changelog ${pages} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
