# What makes a shipped object harder to abuse: zorvcrt_hardening(target) for compiling, and the link flags.
function(zorvcrt_hardening target)
  target_compile_options(${target} PRIVATE -fstack-protector-strong -fcf-protection=full
    -fstack-clash-protection)
  if(NOT ZORVCRT_SANITIZE)
    target_compile_options(${target} PRIVATE $<$<CONFIG:Release>:-D_FORTIFY_SOURCE=2>)
  endif()
endfunction()

# Full RELRO, no executable stack, and every undefined name found when we link and not when a host starts.
# clang's sanitizer run time lives in the executable, so there the last of these cannot hold.
set(ZORVCRT_LINK_HARDENING LINKER:-z,relro LINKER:-z,now LINKER:-z,noexecstack)
if(NOT (ZORVCRT_SANITIZE AND CMAKE_CXX_COMPILER_ID MATCHES Clang))
  list(APPEND ZORVCRT_LINK_HARDENING LINKER:-z,defs)
endif()
