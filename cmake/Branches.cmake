# Processors with the microcode for a fault in their branch cache run a loop half as long again when one of its
# branches meets a boundary of 32 bytes, so that each build is fast or slow by chance. The assembler can keep
# branches off these boundaries, for two or three bytes in a hundred; where it cannot, nothing changes.
include(CheckCXXCompilerFlag)
check_cxx_compiler_flag(-mbranches-within-32B-boundaries ZORVCRT_COMPILER_PLACES_BRANCHES)
check_cxx_compiler_flag(-Wa,-mbranches-within-32B-boundaries ZORVCRT_ASSEMBLER_PLACES_BRANCHES)
if(ZORVCRT_COMPILER_PLACES_BRANCHES)
  add_compile_options(-mbranches-within-32B-boundaries)
elseif(ZORVCRT_ASSEMBLER_PLACES_BRANCHES)
  add_compile_options(-Wa,-mbranches-within-32B-boundaries)
endif()
