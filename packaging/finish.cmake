# Runs in cpack, when the packages are built. The packages may be installed for several architectures at once, which
# cpack cannot say; and the trigger is all that a library needs: no scripts that call ldconfig themselves.
foreach(package IN LISTS CPACK_PACKAGE_FILES)
  set(root ${package}.root)
  execute_process(COMMAND dpkg-deb -R ${package} ${root} COMMAND_ERROR_IS_FATAL ANY)
  file(REMOVE ${root}/DEBIAN/postinst ${root}/DEBIAN/postrm)
  set(multi_arch same)
  if(package MATCHES "/zorvcrt-tools_[^/]*$")
    set(multi_arch foreign)
  endif()
  file(READ ${root}/DEBIAN/control control)
  string(STRIP "${control}" control)
  file(WRITE ${root}/DEBIAN/control "${control}\nMulti-Arch: ${multi_arch}\n")
  execute_process(COMMAND dpkg-deb --root-owner-group -b ${root} ${package}
    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
  file(REMOVE_RECURSE ${root})
endforeach()
