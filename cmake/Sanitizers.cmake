# ZORVCRT_SANITIZE=address,undefined or thread instruments everything in the build; the tests
# are left out of the checks for undefined behaviour (tests/CMakeLists.txt).
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

# zorvcrt_integer_checks(target) lets clang's undefined-behaviour sanitizer also stop where unsigned arithmetic wraps
# and where a conversion that nobody has written changes a value. For the library only. No such thing is undefined,
# but where it happens it has to be meant: wrapping-functions.txt names the places.
function(zorvcrt_integer_checks target)
  if(ZORVCRT_SANITIZE MATCHES undefined AND CMAKE_CXX_COMPILER_ID STREQUAL Clang)
    target_compile_options(${target} PRIVATE -fsanitize=integer,implicit-conversion
      -fno-sanitize-recover=integer,implicit-conversion
      -fsanitize-ignorelist=${CMAKE_CURRENT_FUNCTION_LIST_DIR}/wrapping-functions.txt)
  endif()
endfunction()
