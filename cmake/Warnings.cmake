# The warnings that every target of ours is built with: zorvcrt_warnings(target), for the library, and
# zorvcrt_program_warnings(target), for programs on the C++ library, whose inlined code trips -Wnull-dereference.
set(ZORVCRT_WARNINGS
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wdouble-promotion -Wformat=2)

function(zorvcrt_program_warnings target)
  target_compile_options(${target} PRIVATE ${ZORVCRT_WARNINGS} $<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast>
    $<$<BOOL:${ZORVCRT_WERROR}>:-Werror>)
endfunction()

function(zorvcrt_warnings target)
  zorvcrt_program_warnings(${target})
  target_compile_options(${target} PRIVATE -Wnull-dereference)
endfunction()
