# ZORVCRT_COVERAGE: zorvcrt_coverage(target) makes a target count which of its lines and branches run. For the
# library only; what counts the tests would measure nothing. Threads count too, hence the atomic counters.
function(zorvcrt_coverage target)
  if(ZORVCRT_COVERAGE)
    target_compile_options(${target} PRIVATE --coverage -fprofile-update=atomic)
  endif()
endfunction()

# zorvcrt_coverage_ends(library) lets the counters of a process be written that does not end through exit().
function(zorvcrt_coverage_ends library)
  if(ZORVCRT_COVERAGE)
    set(ends ${PROJECT_SOURCE_DIR}/tests/support/coverage_ends)
    target_sources(${library} PRIVATE ${ends}.c)
    target_link_options(${library} PRIVATE LINKER:--version-script=${ends}.map)
  endif()
endfunction()

if(ZORVCRT_COVERAGE)
  add_link_options(--coverage)
endif()
