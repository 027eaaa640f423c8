# ZORVCRT_SANITIZE=address,undefined or thread instruments everything in the build, tests included.
if(ZORVCRT_SANITIZE)
  set(flags -fsanitize=${ZORVCRT_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  if(ZORVCRT_SANITIZE MATCHES undefined)
    list(APPEND flags -fsanitize=float-cast-overflow,float-divide-by-zero)
  endif()
  if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
    list(APPEND flags -Wno-maybe-uninitialized)  # gcc does not follow its own instrumentation
  endif()
  add_compile_options(${flags})
  add_link_options(${flags})
endif()
# The fuzzer learns from the code that an input reaches; only its own programs link it.
if(ZORVCRT_BUILD_FUZZERS)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
